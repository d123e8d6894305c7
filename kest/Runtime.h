#pragma once

#include "kest/ChildProcess.h"
#include "kest/String.h"

namespace kest {

// Starts programs. Any number of threads may launch at once.
class Runtime {
  public:
    virtual ~Runtime() = default;

    // Starts a program; the caller owns what is returned. Null when it could not be started: the command is
    // empty, the program is missing, not executable or not a program, or the system is out of processes or
    // descriptors. Throws std::bad_alloc. Neither leaves anything behind.
    //
    // `command` is split at blanks and tabs; double quotes group and are removed. No shell, no search, no
    // expansion. `environment` holds name=value entries, each ended by a NUL, the block ended by two more
    // NULs at least; null is an empty environment.
    //
    // The child reads nothing from its standard input, writes to the host's standard error, and has no other
    // descriptor of the host; no signal is blocked or ignored in it.
    virtual ChildProcess* launch(const String& command, const char* environment);
};

}  // namespace kest
