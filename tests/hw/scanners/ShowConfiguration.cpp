// Writes an output with one instance of Memory whose only field contains the configuration file.
#include "tests/hw/scanners/Scanner.h"

int main(int, char** arguments) {
    const std::ifstream file(arguments[2], std::ios::binary);
    std::ostringstream configuration;
    configuration << file.rdbuf();
    scanner::writeOutput(arguments, "<QEL><Memory><Configuration><![CDATA[" + configuration.str() +
                                        "]]></Configuration></Memory></QEL>");
    return 0;
}
