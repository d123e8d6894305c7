#pragma once

#include <functional>
#include <string>

#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

enum class Action { Scan, ListFields, Help, Version, Refuse };

struct CommandLine {
    Action action = Action::Scan;
    Options options;
    bool json = false;    // the format of Action::ListFields
    std::string message;  // why the command line is rejected
};

// Returns the value of an environment variable, or null.
using Environment = std::function<const char*(const char* name)>;

// Parses the arguments of main(). The environment has the defaults of the options that kUsage says it has.
CommandLine parseCommandLine(int count, char* const* arguments, const Environment& environment);

extern const char* const kUsage;

}  // namespace toolkit::quorvah
