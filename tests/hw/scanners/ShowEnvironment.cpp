// Prints its environment, one entry per line.
#include <unistd.h>

#include <iostream>

int main() {
    for (char** entry = environ; *entry != nullptr; ++entry) std::cout << *entry << '\n';
    return 0;
}
