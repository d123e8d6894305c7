#include "kest/Runtime.h"

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "kest/CommandLine.h"
#include "kest/EnvironmentBlock.h"
#include "kest/Launcher.h"
#include "kest/PipeStream.h"
#include "kest/Text.h"

namespace kest {

namespace {

class StartedChild final : public ChildProcess {
  public:
    bool start(const Program& program) {
        StartedProgram started = startProgram(program);
        process_ = std::move(started.process);
        output_.open(std::move(started.output));
        return process_ != nullptr;
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

// An argument that holds a NUL would be cut short on its way into the child.
bool canBePassed(const std::vector<std::string>& arguments) {
    return !arguments.empty() &&
           std::none_of(arguments.begin(), arguments.end(),
                        [](const std::string& argument) { return argument.find('\0') != std::string::npos; });
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
    const std::vector<std::string> arguments = splitCommandLine(narrow(command.view()));
    if (!canBePassed(arguments)) return nullptr;
    const std::vector<const char*> argumentPointers = pointersTo(arguments);
    std::vector<const char*> entries = splitEnvironmentBlock(environment);
    entries.push_back(nullptr);

    // Made before the start: once the child runs, nothing may fail any more.
    auto child = std::make_unique<StartedChild>();
    if (!child->start({argumentPointers.data(), entries.data()})) return nullptr;
    return child.release();
}

}  // namespace kest
