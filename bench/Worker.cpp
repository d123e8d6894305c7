#include "bench/Worker.h"

#include <sys/resource.h>

#include <cstdlib>
#include <fstream>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>

#include "bench/Process.h"
#include "bench/Works.h"

namespace zavbench {

namespace {

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

// The CPU time of this process and of its children that have ended.
double cpuNow() {
    double used = 0;
    for (const auto who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
        rusage usage{};
        ::getrusage(who, &usage);
        used += seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }
    return used;
}

// The high-water mark of the kernel. The value of getrusage would include the parent's memory.
double peakBytes() {
    std::ifstream status("/proc/self/status");
    std::string line;
    while (std::getline(status, line)) {
        if (line.starts_with("VmHWM:")) return 1024.0 * std::atof(line.c_str() + 6);
    }
    return 0;
}

}  // namespace

Sample runWorker(const std::vector<std::string>& arguments) {
    std::vector<std::string> command = {"/proc/self/exe", "--work"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const Finished finished = runProcess(command);
    if (finished.status != 0) {
        std::cerr << "zav_bench: work failed: " << arguments[0] << '\n';
        std::exit(1);
    }
    Sample sample{};
    std::istringstream(finished.output) >> sample.cpuSeconds >> sample.peakBytes;
    return sample;
}

int work(const std::vector<std::string>& arguments) {
    const auto& works = allWorks();
    const auto found = works.find(arguments.at(0));
    if (found == works.end()) return 2;
    const std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    const std::function<bool()> action = found->second(rest);
    const double cpu = cpuNow();
    const bool worked = action();
    const double used = cpuNow() - cpu;
    if (!worked) return 1;
    std::cout << used << ' ' << peakBytes() << '\n';
    return 0;
}

}  // namespace zavbench
