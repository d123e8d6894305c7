// A scanner that ignores signals, as does the child that it starts. It prints both process ids. Both end after a minute.
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
