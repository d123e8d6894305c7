// Writes a line to its standard error.
#include <cstdio>

int main() {
    std::fputs("complaint\n", stderr);
}
