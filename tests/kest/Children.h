// What the tests of launching share: running one of the programs in children/, and watching that nothing
// stays behind.
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

// An environment block as hosts build it, with three NULs behind the last entry.
std::string environmentBlock(std::initializer_list<std::string> entries);

// Null when Runtime::launch returns null.
std::unique_ptr<ChildProcess> launch(const std::string& command, const std::string& environment = {0, 0, 0});

// Byte by byte, to the end.
std::string readAll(OutputStream& stream);

// Byte by byte, to the line feed, which is not part of the line, or to the end.
std::string readLine(OutputStream& stream);

// What a child wrote, and the status that both operations told.
struct Outcome {
    std::string output;
    int status = -1;

    bool operator==(const Outcome&) const = default;
};
std::ostream& operator<<(std::ostream& stream, const Outcome& outcome);

// The whole life of a child; a failed check and status -2 when it could not be started.
Outcome run(const std::string& command, const std::string& environment = {0, 0, 0});

// Both return the path.
std::string makeFile(const zavtest::ScratchDir& directory, const std::string& name,
                     const std::string& content, unsigned mode);
std::string makeNamedPipe(const zavtest::ScratchDir& directory);

// Waits until somebody has the named pipe open for reading.
void openForWriting(const std::string& namedPipe);

}  // namespace kest::test
