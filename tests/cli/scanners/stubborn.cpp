// A scanner that, like the child that it starts, is not impressed by signals. It tells both process ids. Neither lives
// longer than a minute.
#include <unistd.h>

#include <csignal>
#include <cstdio>

int main() {
    for (int signal = 1; signal <= SIGRTMAX; ++signal) {
        if (signal != SIGALRM) std::signal(signal, SIG_IGN);
    }
    const pid_t child = fork();
    alarm(60);
    if (child > 0) {
        std::printf("processes %d and %d.\n", getpid(), child);
        std::fflush(stdout);
    }
    for (;;) pause();
}
