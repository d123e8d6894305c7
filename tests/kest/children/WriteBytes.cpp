// Writes each of the 256 bytes once, in ascending order.
#include <cstdio>

int main() {
    for (int byte = 0; byte < 256; ++byte) std::putchar(byte);
}
