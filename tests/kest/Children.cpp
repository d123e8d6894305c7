#include "tests/kest/Children.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kest/Retry.h"
#include "kest/Runtime.h"
#include "kest/Text.h"

namespace kest::test {

std::string child(const std::string& name) {
    return "\"" KEST_CHILDREN "/" + name + "\"";
}

std::string environmentBlock(std::initializer_list<std::string> entries) {
    std::string block;
    for (const std::string& entry : entries) block += entry + '\0';
    return block.append(3, '\0');
}

std::unique_ptr<ChildProcess> launch(const std::string& command, const std::string& environment) {
    return std::unique_ptr<ChildProcess>(Runtime().launch(String(widen(command)), environment.data()));
}

std::string readAll(OutputStream& stream) {
    std::string bytes;
    for (int byte = 0; (byte = stream.read()) >= 0;) bytes += static_cast<char>(byte);
    return bytes;
}

std::string readLine(OutputStream& stream) {
    std::string line;
    for (int byte = 0; (byte = stream.read()) >= 0 && byte != '\n';) line += static_cast<char>(byte);
    return line;
}

std::ostream& operator<<(std::ostream& stream, const Outcome& outcome) {
    return stream << "status " << outcome.status << ", output: " << outcome.output;
}

Outcome run(const std::string& command, const std::string& environment) {
    const std::unique_ptr<ChildProcess> process = launch(command, environment);
    if (process == nullptr) {
        ADD_FAILURE() << "not started: " << command;
        return {"", -2};
    }
    const std::string output = readAll(*process->getOutputStream());
    const int status = process->waitFor();
    EXPECT_EQ(process->exitValue(), status);
    return {output, status};
}

std::string makeFile(const zavtest::ScratchDir& directory, const std::string& name,
                     const std::string& content, unsigned mode) {
    std::string path = directory.write(name, content);
    EXPECT_EQ(chmod(path.c_str(), mode), 0);
    return path;
}

std::string makeNamedPipe(const zavtest::ScratchDir& directory) {
    std::string path = directory.path() / "pipe";
    EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
    return path;
}

void openForWriting(const std::string& namedPipe) {
    const int descriptor = retryInterrupted([&] { return open(namedPipe.c_str(), O_WRONLY | O_CLOEXEC); });
    EXPECT_GE(descriptor, 0);
    close(descriptor);
}

}  // namespace kest::test
