// A scanner that prints a line and then waits for a signal.
#include <unistd.h>

int main() {
    const char line[] = "group Processor: 1 instances, 0 ms\n";
    if (write(STDOUT_FILENO, line, sizeof line - 1) < 0) return 1;
    for (;;) pause();
}
