#include <malloc.h>
#include <sys/auxv.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "toolkit/quorvis/CommandLine.h"
#include "toolkit/quorvis/Scan.h"

namespace {

namespace quorvis = toolkit::quorvis;

int complain(const std::string& message, quorvis::Outcome outcome) {
    std::fprintf(stderr, "quorvis: %s\n", message.c_str());
    return static_cast<int>(outcome);
}

int run(int argc, char** argv) {
    const char* const root = ::getauxval(AT_SECURE) == 0 ? std::getenv("QUORVIS_ROOT") : nullptr;
    const quorvis::CommandLine line = quorvis::parseCommandLine(argc, argv, root);
    switch (line.action) {
        case quorvis::Action::Help:
            std::fputs(quorvis::kUsage, stdout);
            return 0;
        case quorvis::Action::Version:
            std::puts("quorvis " QUORVIS_VERSION);
            return 0;
        case quorvis::Action::Refuse:
            return complain(line.message + " (--help shows the usage)", quorvis::Outcome::BadInput);
        case quorvis::Action::Check:
            return static_cast<int>(quorvis::check(line.options));
        case quorvis::Action::Scan:
            return static_cast<int>(quorvis::scan(line.options));
    }
    return static_cast<int>(quorvis::Outcome::Failed);
}

}  // namespace

int main(int argc, char** argv) {
    // Memory that was let go is used again rather than given back and fetched anew: the scanner lives shortly.
    constexpr int kMegabyte = 1 << 20;
    ::mallopt(M_MMAP_THRESHOLD, 32 * kMegabyte);
    ::mallopt(M_TRIM_THRESHOLD, 256 * kMegabyte);
    ::mallopt(M_TOP_PAD, kMegabyte);
    // The output files count even when nobody reads the messages any more.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return run(argc, argv);
    } catch (const std::exception& failure) {
        return complain(failure.what(), quorvis::Outcome::Failed);
    }
}
