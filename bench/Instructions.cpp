#include "bench/Instructions.h"

#include <cstdlib>
#include <iostream>

#include "bench/Process.h"

namespace zavbench {

double instructionsOf(const std::vector<std::string>& work) {
    std::vector<std::string> command = {
        "valgrind",   "--tool=callgrind",      "--callgrind-out-file=/dev/null",
        "--log-fd=1", besideThis("zav_bench"), "--work"};
    command.insert(command.end(), work.begin(), work.end());
    const Finished finished = runProcess(command, true);
    const std::string label = "Collected :";
    const std::size_t found = finished.output.find(label);
    if (finished.status != 0 || found == std::string::npos) {
        std::cerr << "zav_bench: cannot count instructions of " << work[0] << "; is valgrind installed?\n";
        std::exit(1);
    }
    return std::atof(finished.output.c_str() + found + label.size());
}

}  // namespace zavbench
