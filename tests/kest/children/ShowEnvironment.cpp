// Writes its environment, each entry on a line of its own.
#include <unistd.h>

#include <cstdio>

int main() {
    for (char** entry = environ; *entry != nullptr; ++entry) std::puts(*entry);
}
