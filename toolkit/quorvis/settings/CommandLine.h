#pragma once

#include <string>

namespace toolkit::quorvis {

struct Options {
    std::string config;
    std::string output;
    std::string warnings;
    std::string signatures;
    std::string root;     // empty when neither the command line nor the environment names one
    std::string explain;  // the guid of a signature; empty when none is explained
};

// Check only reports the problems of the signatures file; the other files are optional.
enum class Action { Scan, Check, Help, Version, Refuse };

struct CommandLine {
    Action action = Action::Scan;
    Options options;
    std::string message;  // why the command line is refused
};

// Parses the arguments of main(). `environmentRoot` is the default of --root and may be null.
CommandLine parseCommandLine(int count, char* const* arguments, const char* environmentRoot);

extern const char* const kUsage;

}  // namespace toolkit::quorvis
