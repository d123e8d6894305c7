// A scanner that a signal ends.
#include <csignal>

int main() {
    std::raise(SIGKILL);
    return 0;
}
