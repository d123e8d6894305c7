// Writes the content of output.xml and succeeds.
#include "tests/hw/scanners/Scanner.h"

int main(int, char** arguments) {
    scanner::writeOutput(arguments, scanner::beside(arguments, "output.xml"));
    return 0;
}
