#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"

namespace zavtest {

// The exit status and the output of a program.
struct Finished {
    int status;  // the exit status, or the negative number of the signal that ended it
    std::string output;
    std::string errors;
};

// Runs a program to its end with these arguments and additional environment entries ("NAME=value").
inline Finished runProgram(const std::string& program, const std::vector<std::string>& arguments,
                           const std::vector<std::string>& environment = {}) {
    const ScratchDir dir;
    const std::string output = (dir.path() / "out").string();
    const std::string errors = (dir.path() / "err").string();
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error("fork");
    if (child == 0) {
        if (std::freopen(output.c_str(), "w", stdout) == nullptr ||
            std::freopen(errors.c_str(), "w", stderr) == nullptr) {
            _exit(126);
        }
        for (const std::string& variable : environment) putenv(strdup(variable.c_str()));
        std::vector<char*> pointers = {strdup(program.c_str())};
        for (const std::string& argument : arguments) pointers.push_back(strdup(argument.c_str()));
        pointers.push_back(nullptr);
        execv(program.c_str(), pointers.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), readAll(output), readAll(errors)};
}

}  // namespace zavtest
