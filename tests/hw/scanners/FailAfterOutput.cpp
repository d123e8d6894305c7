// Writes the content of output.xml and exits with the number in status.
#include "tests/hw/scanners/Scanner.h"

int main(int, char** arguments) {
    scanner::writeOutput(arguments, scanner::beside(arguments, "output.xml"));
    return std::stoi(scanner::beside(arguments, "status"));
}
