#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kest/ChildProcess.h"
#include "kest/String.h"

namespace kest {

// What came of the attempt to start a program.
struct Launch {
    // Null when it could not be started: it is missing, not executable or not a program, or the system is out of
    // processes or descriptors.
    std::unique_ptr<ChildProcess> child;
    // Why not, in words that follow no locale.
    std::string failure;
};

// Starts programs. Any number of threads may launch at once.
class Runtime {
  public:
    virtual ~Runtime() = default;

    // Starts the program that a command names, `command` being split at blanks and tabs; double quotes group and are
    // removed. No shell, no search, no expansion. Null when it could not be started; else the caller owns what is
    // returned. For the environment and the child see below.
    virtual ChildProcess* launch(const String& command, const char* environment);

    // Starts the program whose path is the first of the arguments. Each argument reaches it as it is, whatever it
    // holds; a NUL cannot be passed, and one that holds it is refused. Throws std::bad_alloc. Neither that nor a
    // failure leaves anything behind.
    //
    // `environment` holds name=value entries, each ended by a NUL, the block ended by two more NULs at least; null
    // is an empty environment.
    //
    // The child reads nothing from its standard input, writes to the host's standard error, and has no other
    // descriptor of the host; no signal is blocked or ignored in it.
    Launch launch(const std::vector<std::string>& arguments, const char* environment);
};

}  // namespace kest
