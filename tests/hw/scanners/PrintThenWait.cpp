// Prints a line, waits until another process opens the named pipe beside it for writing, prints a second line, and
// writes the content of output.xml.
#include <iostream>

#include "tests/hw/scanners/Scanner.h"

int main(int, char** arguments) {
    std::cout << "first" << std::endl;
    scanner::beside(arguments, "pipe");
    std::cout << "second" << std::endl;
    scanner::writeOutput(arguments, scanner::beside(arguments, "output.xml"));
    return 0;
}
