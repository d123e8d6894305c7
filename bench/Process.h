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

struct Observed {
    int status;  // as returned by waitpid
    double
        bytesRead;  // by the program and its children, as the kernel counts them in /proc/PID/io: files and pipes
    double
        peakBytes;  // the largest proportional set size of the program and its children together, every two milliseconds
};

// Runs a program like runProcess() and observes it, which makes it slower. Its output is discarded.
Observed observeProcess(const std::vector<std::string>& arguments);

// The path of a program that is built in the directory of this one.
std::string besideThis(const std::string& name);

}  // namespace zavbench
