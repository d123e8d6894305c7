// A scanner that reports the directory that it was asked to scan.
#include <cstdlib>
#include <fstream>

#include "tests/cli/scanners/Arguments.h"

int main(int argc, char** argv) {
    const char* output = scanner::argument(argc, argv, "-o");
    const char* root = std::getenv("QUORVAH_ROOT");
    if (output == nullptr) return 2;
    std::ofstream(output) << "<Inventory><ScanInfo><RootPath>" << (root == nullptr ? "none" : root)
                          << "</RootPath></ScanInfo></Inventory>";
    return 0;
}
