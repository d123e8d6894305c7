// Closes its standard output, then waits for the named pipe beside it and writes the content of output.xml.
#include <unistd.h>

#include "tests/hw/scanners/Scanner.h"

int main(int, char** arguments) {
    close(STDOUT_FILENO);
    scanner::beside(arguments, "pipe");
    scanner::writeOutput(arguments, scanner::beside(arguments, "output.xml"));
    return 0;
}
