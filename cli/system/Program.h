#pragma once

#include <string>
#include <vector>

namespace zavcli {

struct ProgramEnd {
    int status = 0;  // exit status, 128 + n when signal n ended it
    std::string out;
};

// Runs the program and waits for it; its standard output and standard error come back together. Throws
// Failure when it cannot be started.
ProgramEnd runProgram(const std::string& path, const std::vector<std::string>& arguments);

}  // namespace zavcli
