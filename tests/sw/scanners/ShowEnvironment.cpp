// Prints its environment, one entry a line.
#include <unistd.h>

#include <iostream>

int main() {
    for (char** entry = environ; *entry != nullptr; ++entry) std::cout << *entry << '\n';
    return 0;
}
