// Work that is measured in a process of its own, so that it starts with a fresh heap and its memory can be
// told.
#pragma once

#include <string>
#include <vector>

namespace zavbench {

struct Sample {
    double cpuSeconds;  // user and system, of the work alone and of the children that it started
    double peakBytes;   // of the whole process
};

// Runs this program anew with "--work NAME ARGUMENT..." and returns what it measured. Ends the program with a
// message when the work failed.
Sample runWorker(const std::vector<std::string>& arguments);

// The other side: carries out the work named by the arguments and prints the sample. Returns the exit status.
int work(const std::vector<std::string>& arguments);

}  // namespace zavbench
