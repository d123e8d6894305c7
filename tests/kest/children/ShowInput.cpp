// Reads its standard input to the end and writes the number of bytes.
#include <unistd.h>

#include <cstdio>

int main() {
    int count = 0;
    ssize_t length = 0;
    for (char byte = 0; (length = read(STDIN_FILENO, &byte, 1)) == 1;) ++count;
    std::printf("%d\n", count);
    return length == 0 ? 0 : 1;
}
