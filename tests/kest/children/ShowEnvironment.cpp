// Writes its environment, one entry per line.
#include <unistd.h>

#include <cstdio>

int main() {
    for (char** entry = environ; *entry != nullptr; ++entry) std::puts(*entry);
}
