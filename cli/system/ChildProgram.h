#pragma once

#include <string>
#include <vector>

namespace zavcli {

// An exit status above this is the number of the signal that ended the program, plus this.
constexpr int kSignalStatusBase = 128;

struct ProgramResult {
    int status = 0;  // the exit status, or kSignalStatusBase plus a signal
    std::string output;
};

// Runs the program and waits for it. The output is that of standard output and standard error together.
// Throws Failure if the program cannot be started.
ProgramResult runProgram(const std::string& path, const std::vector<std::string>& arguments);

}  // namespace zavcli
