#include "kest/Runtime.h"

#include "kest/CommandLine.h"
#include "kest/EnvironmentBlock.h"
#include "kest/ErrorText.h"
#include "kest/Launcher.h"
#include "kest/PipeStream.h"
#include "kest/Text.h"

namespace kest {

namespace {

class StartedChild final : public ChildProcess {
  public:
    // Returns 0 or an error number.
    int start(const Program& program) {
        StartedProgram started = startProgram(program);
        if (started.process == nullptr) return started.error;
        process_ = std::move(started.process);
        output_.open(std::move(started.output), process_->endDescriptor());
        return 0;
    }

    int exitValue() override { return process_->wait(); }
    int waitFor() override { return process_->wait(); }
    OutputStream* getOutputStream() override { return &output_; }

  private:
    // Members are destroyed in reverse order: the pipe must be closed before the process is waited for, or a child
    // that still writes could not end.
    std::unique_ptr<Process> process_;
    PipeStream output_;
};

// The reason why these arguments cannot be passed to a program; empty if they can. An argument with a NUL would be
// truncated.
std::string invalidArguments(const std::vector<std::string>& arguments) {
    if (arguments.empty()) return "no program is named";
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i].find('\0') == std::string::npos) continue;
        return (i == 0 ? "its path" : "its argument " + std::to_string(i)) + " holds a NUL";
    }
    return {};
}

std::vector<const char*> pointersTo(const std::vector<std::string>& arguments) {
    std::vector<const char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
    pointers.push_back(nullptr);
    return pointers;
}

}  // namespace

ChildProcess* Runtime::launch(const String& command, const char* environment) {
    return launch(splitCommandLine(narrow(command.view())), environment).child.release();
}

LaunchResult Runtime::launch(const std::vector<std::string>& arguments, const char* environment) {
    if (std::string reason = invalidArguments(arguments); !reason.empty())
        return {nullptr, std::move(reason)};
    const std::vector<const char*> argumentPointers = pointersTo(arguments);
    std::vector<const char*> entries = splitEnvironmentBlock(environment);
    entries.push_back(nullptr);

    // Allocated before the start: nothing may fail once the child runs.
    auto child = std::make_unique<StartedChild>();
    const int error = child->start({argumentPointers.data(), entries.data()});
    if (error != 0) return {nullptr, errorText(error)};
    return {std::move(child), {}};
}

}  // namespace kest
