#pragma once

#include <memory>
#include <string>
#include <vector>

#include "kest/ChildProcess.h"
#include "kest/String.h"

namespace kest {

struct LaunchResult {
    // Null when the program could not be started: it is missing, not executable or not a program, or the system is
    // out of processes or descriptors.
    std::unique_ptr<ChildProcess> child;
    // The reason when `child` is null. The text does not depend on the host's locale.
    std::string failure;
};

// Starts programs. Several threads may start programs at the same time.
class Runtime {
  public:
    virtual ~Runtime() = default;

    // Starts the program of a command line, which splitCommandLine() splits. There is no shell, no search path and no
    // expansion. Null when the program could not be started; otherwise the caller owns the result. The overload below
    // describes the environment and the child.
    virtual ChildProcess* launch(const String& command, const char* environment);

    // Starts the program whose path is the first argument. The arguments are passed on unchanged; an argument with a
    // NUL is refused. Throws std::bad_alloc. No process or descriptor is left after a failure.
    //
    // `environment` holds name=value entries, each ended by a NUL, and ends with at least two more NULs; null is an
    // empty environment.
    //
    // The child's standard input is empty, and its standard error is the host's. It inherits no other descriptor of
    // the host. No signal is blocked or ignored in it.
    LaunchResult launch(const std::vector<std::string>& arguments, const char* environment);
};

}  // namespace kest
