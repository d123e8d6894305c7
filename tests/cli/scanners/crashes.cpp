// A scanner that is ended by a signal.
#include <csignal>

int main() {
    std::raise(SIGKILL);
    return 0;
}
