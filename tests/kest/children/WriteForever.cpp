// Writes until that fails.
#include <unistd.h>

int main() {
    while (write(STDOUT_FILENO, "more\n", 5) > 0) {
    }
    return 1;
}
