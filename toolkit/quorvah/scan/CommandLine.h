#pragma once

#include <string>

#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

enum class Action { Scan, Help, Version, Refuse };

struct CommandLine {
    Action action = Action::Scan;
    Options options;
    std::string message;  // why the command line is rejected
};

// Parses the arguments of main(). `environmentRoot` is the default of --root and may be null.
CommandLine parseCommandLine(int count, char* const* arguments, const char* environmentRoot);

extern const char* const kUsage;

}  // namespace toolkit::quorvah
