// A scanner that writes truncated output and exits with status 0.
#include <fstream>

#include "tests/cli/scanners/Arguments.h"

int main(int argc, char** argv) {
    const char* output = scanner::argument(argc, argv, "-o");
    if (output == nullptr) return 2;
    std::ofstream(output) << "<Inventory><Processor><DeviceID>cpu0</DeviceID></Processor><Proce";
    return 0;
}
