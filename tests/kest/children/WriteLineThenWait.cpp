// Writes the line "first", waits until somebody opens the named pipe of the first argument for writing,
// writes the line "second", and ends with 7.
#include <fcntl.h>

#include <cstdio>

int main(int, char** arguments) {
    std::puts("first");
    std::fflush(stdout);
    if (open(arguments[1], O_RDONLY | O_CLOEXEC) < 0) return 1;
    std::puts("second");
    return 7;
}
