// Writes a line and the beginning of another, and continues when the named pipe in its argument has a writer. Exits
// with 5 if that never happens.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

int main(int, char** words) {
    std::fputs("first\nsec", stdout);
    std::fflush(stdout);
    alarm(120);
    if (open(words[1], O_RDONLY | O_CLOEXEC) < 0) return 5;
    std::fputs("ond\n", stdout);
}
