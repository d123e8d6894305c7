// Shows its environment, entry by entry.
#include <unistd.h>

#include <cstdio>

int main() {
    for (char** entry = environ; *entry != nullptr; ++entry) std::puts(*entry);
}
