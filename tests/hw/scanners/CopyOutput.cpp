// Writes what stands in output.xml, and ends well.
#include "tests/hw/scanners/Scanner.h"

int main(int, char** arguments) {
    scanner::writeOutput(arguments, scanner::beside(arguments, "output.xml"));
    return 0;
}
