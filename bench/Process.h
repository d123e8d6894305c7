#pragma once

#include <string>
#include <vector>

namespace zavbench {

struct Finished {
    int status;          // as returned by wait4
    double cpuSeconds;   // user and system time of the child
    double wallSeconds;  // from start to end
    std::string output;  // its standard output
};

// Runs a program, given by its path or by a name in PATH, and waits for it. If `quiet`, its standard error is
// discarded. Ends this program with a message if it cannot be started.
Finished runProcess(const std::vector<std::string>& arguments, bool quiet = false);

// The path of a program that is built in the directory of this one.
std::string besideThis(const std::string& name);

}  // namespace zavbench
