#pragma once

#include <string>

namespace toolkit::quorvis {

struct Options {
    std::string config;
    std::string output;
    std::string warnings;
    std::string signatures;
    std::string root;     // empty when neither the command line nor the environment names one
    std::string explain;  // the guid of a signature; empty for none
};

// Check: only tell what is wrong with the signatures file; all other files may be missing from the options.
enum class Action { Scan, Check, Help, Version, Refuse };

struct CommandLine {
    Action action = Action::Scan;
    Options options;
    std::string message;  // why the command line is refused
};

// Understands the arguments of main(). `environmentRoot` stands in for a --root that is not given; it may be
// null.
CommandLine parseCommandLine(int count, char* const* arguments, const char* environmentRoot);

extern const char* const kUsage;

}  // namespace toolkit::quorvis
