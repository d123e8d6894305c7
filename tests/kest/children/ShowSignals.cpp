// Writes its masks of blocked and of ignored signals.
#include <fstream>
#include <iostream>
#include <string>

int main() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("SigBlk", 0) == 0 || line.rfind("SigIgn", 0) == 0) std::cout << line << '\n';
    }
}
