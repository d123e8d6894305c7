// Prints the bytes of lines, writes what stands in output.xml, and ends well.
#include <iostream>

#include "tests/hw/scanners/Scanner.h"

int main(int, char** arguments) {
    std::cout << scanner::beside(arguments, "lines") << std::flush;
    scanner::writeOutput(arguments, scanner::beside(arguments, "output.xml"));
    return 0;
}
