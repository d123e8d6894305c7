// Writes until a write fails.
#include <unistd.h>

int main() {
    while (write(STDOUT_FILENO, "more\n", 5) > 0) {
    }
    return 1;
}
