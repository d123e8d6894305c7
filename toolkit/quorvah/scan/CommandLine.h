#pragma once

#include <string>

#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

enum class Action { Scan, Help, Version, Refuse };

struct CommandLine {
    Action action = Action::Scan;
    Options options;
    std::string message;  // why the command line is refused
};

// Understands the arguments of main(). `environmentRoot` stands in for a --root that is not given; it may be
// null.
CommandLine parseCommandLine(int count, char* const* arguments, const char* environmentRoot);

extern const char* const kUsage;

}  // namespace toolkit::quorvah
