// Raises the signal with the number in the first argument.
#include <sys/resource.h>

#include <csignal>
#include <cstdlib>

int main(int, char** arguments) {
    const rlimit noCore = {0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    const int number = std::atoi(arguments[1]);
    std::signal(number, SIG_DFL);
    return std::raise(number);
}
