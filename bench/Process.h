#pragma once

#include <string>
#include <vector>

namespace zavbench {

struct Finished {
    int status;          // as wait4 gives it
    double cpuSeconds;   // user and system, of the whole child
    double wallSeconds;  // from its start to its end
    std::string output;  // what it wrote to standard output
};

// Starts a program by its path or by its name in PATH and waits for it; its standard error goes to the null
// device when `quiet`. Ends this program with a message when it cannot be started.
Finished runProcess(const std::vector<std::string>& arguments, bool quiet = false);

// The path of a program that is built beside this one.
std::string besideThis(const std::string& name);

}  // namespace zavbench
