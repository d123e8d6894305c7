// Prints the content of lines, writes the content of output.xml and succeeds.
#include <iostream>

#include "tests/hw/scanners/Scanner.h"

int main(int, char** arguments) {
    std::cout << scanner::beside(arguments, "lines") << std::flush;
    scanner::writeOutput(arguments, scanner::beside(arguments, "output.xml"));
    return 0;
}
