// Writes the two masks of signals that it was born with: the blocked and the ignored ones.
#include <fstream>
#include <iostream>
#include <string>

int main() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("SigBlk", 0) == 0 || line.rfind("SigIgn", 0) == 0) std::cout << line << '\n';
    }
}
