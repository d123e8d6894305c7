// Closes its standard output and exits with 7 some time later.
#include <unistd.h>

int main() {
    close(STDOUT_FILENO);
    usleep(50'000);
    return 7;
}
