// Writes the line "first", waits until another process opens the named pipe in the first argument for writing, writes
// the line "second" and exits with 7.
#include <fcntl.h>

#include <cstdio>

int main(int, char** arguments) {
    std::puts("first");
    std::fflush(stdout);
    if (open(arguments[1], O_RDONLY | O_CLOEXEC) < 0) return 1;
    std::puts("second");
    return 7;
}
