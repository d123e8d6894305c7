// Writes the content of output.xml and raises the signal whose number is in signal.
#include <csignal>

#include "tests/hw/scanners/Scanner.h"

int main(int, char** arguments) {
    scanner::writeOutput(arguments, scanner::beside(arguments, "output.xml"));
    std::raise(std::stoi(scanner::beside(arguments, "signal")));
    return 0;
}
