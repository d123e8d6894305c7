#pragma once

#include "kest/ChildProcess.h"
#include "kest/String.h"

namespace kest {

// Starts programs.
class Runtime {
  public:
    virtual ~Runtime() = default;

    // Starts a program; the caller owns what is returned. Null when it could not be started: it is missing, not
    // executable or not a program, or the system is out of processes or descriptors.
    // command      split at blanks and tabs; double quotes group and are removed. No shell, no search, no expansion.
    // environment  name=value entries, each ended by a NUL, the block ended by two more NULs at least.
    virtual ChildProcess* launch(const String& command, const char* environment);
};

}  // namespace kest
