// Measures a work in a process of its own, so that it starts with a new heap and its memory can be measured.
#pragma once

#include <string>
#include <vector>

namespace zavbench {

struct Sample {
    double cpuSeconds;  // user and system time of the work and of its children
    double peakBytes;   // of the whole process
};

// Runs this program with "--work NAME ARGUMENT..." and returns its measurement. Ends the program with a message if
// the work fails.
Sample runWorker(const std::vector<std::string>& arguments);

// Called in that process: carries out the work and prints the sample. Returns the exit status.
int work(const std::vector<std::string>& arguments);

}  // namespace zavbench
