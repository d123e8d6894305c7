// VanishingHost <program> <argument>: a host that ignores SIGCHLD and ends while its child runs. It starts the
// program, reads one byte of its output and exits.
#include <unistd.h>

#include <csignal>
#include <string>

#include "kest/Runtime.h"
#include "kest/Text.h"

int main(int, char** arguments) {
    std::signal(SIGCHLD, SIG_IGN);
    const std::string command = "\"" + std::string(arguments[1]) + "\" \"" + arguments[2] + "\"";
    kest::ChildProcess* const child = kest::Runtime().launch(kest::String(kest::widen(command)), nullptr);
    _exit(child != nullptr && child->getOutputStream()->read() >= 0 ? 0 : 1);
}
