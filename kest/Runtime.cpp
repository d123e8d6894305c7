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
    // 0, or the number of the error.
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
    // In this order: the pipe is closed before the process is waited for, so that a child that still writes
    // can end.
    std::unique_ptr<Process> process_;
    PipeStream output_;
};

// Why these cannot be passed to a program; empty when they can. An argument that holds a NUL would be cut short on its
// way.
std::string objectionTo(const std::vector<std::string>& arguments) {
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

Launch Runtime::launch(const std::vector<std::string>& arguments, const char* environment) {
    if (std::string objection = objectionTo(arguments); !objection.empty())
        return {nullptr, std::move(objection)};
    const std::vector<const char*> argumentPointers = pointersTo(arguments);
    std::vector<const char*> entries = splitEnvironmentBlock(environment);
    entries.push_back(nullptr);

    // Made before the start: once the child runs, nothing may fail any more.
    auto child = std::make_unique<StartedChild>();
    const int error = child->start({argumentPointers.data(), entries.data()});
    if (error != 0) return {nullptr, errorText(error)};
    return {std::move(child), {}};
}

}  // namespace kest
