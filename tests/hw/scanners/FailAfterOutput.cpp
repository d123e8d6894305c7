// Writes what stands in output.xml, and ends with the number that stands in status.
#include "tests/hw/scanners/Scanner.h"

int main(int, char** arguments) {
    scanner::writeOutput(arguments, scanner::beside(arguments, "output.xml"));
    return std::stoi(scanner::beside(arguments, "status"));
}
