// Support for tests that start the programs in children/.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>

#include "kest/ChildProcess.h"
#include "tests/support/NothingLeft.h"
#include "tests/support/ScratchDir.h"

namespace kest::test {

using zavtest::NothingLeft;

// The path of a program in children/, quoted for a command line.
std::string child(const std::string& name);

// An environment block as hosts build it, with three NULs after the last entry.
std::string environmentBlock(std::initializer_list<std::string> entries);

// Null when Runtime::launch returns null.
std::unique_ptr<ChildProcess> launch(const std::string& command, const std::string& environment = {0, 0, 0});

// Reads byte by byte to the end.
std::string readAll(OutputStream& stream);

// Reads byte by byte to a line feed, which is not included, or to the end.
std::string readLine(OutputStream& stream);

// The output of a child, and the status that both operations returned.
struct Outcome {
    std::string output;
    int status = -1;

    bool operator==(const Outcome&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

// Runs a child to its end. Fails the test and returns status -2 if the child could not be started.
Outcome run(const std::string& command, const std::string& environment = {0, 0, 0});

// Both return the path of the new file.
std::string makeFile(const zavtest::ScratchDir& directory, const std::string& name,
                     const std::string& content, unsigned mode);
std::string makeNamedPipe(const zavtest::ScratchDir& directory);

// Blocks until another process has opened the named pipe for reading.
void openForWriting(const std::string& namedPipe);

}  // namespace kest::test
