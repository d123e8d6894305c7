#include <malloc.h>
#include <sys/auxv.h>
#include <sys/mman.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <string>

#include "toolkit/machine/files/OpenStreams.h"
#include "toolkit/quorvis/evaluation/Scan.h"
#include "toolkit/quorvis/settings/CommandLine.h"

namespace {

namespace quorvis = toolkit::quorvis;

int fail(const std::string& message, quorvis::Outcome outcome) {
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
            return fail(line.message + " (--help shows the usage)", quorvis::Outcome::BadInput);
        case quorvis::Action::Check:
            return static_cast<int>(quorvis::check(line.options));
        case quorvis::Action::Scan:
            return static_cast<int>(quorvis::scan(line.options));
    }
    return static_cast<int>(quorvis::Outcome::Failed);
}

constexpr int kMegabyte = 1 << 20;

// Keeps freed memory in the process for reuse, because a scan is short.
void keepMemory() {
    ::mallopt(M_MMAP_THRESHOLD, 32 * kMegabyte);
    ::mallopt(M_TRIM_THRESHOLD, 256 * kMegabyte);
    ::mallopt(M_TOP_PAD, kMegabyte);
    // Each additional arena would reserve 64 MB of the address space, which the settings limit.
    ::mallopt(M_ARENA_MAX, 1);
}

// Uses huge pages for the memory of the signatures. With thousands of signatures, page faults would take a tenth of the
// time of a scan.
void useHugePages() {
    constexpr std::size_t kHugePageSize = std::size_t{2} << 20;
    std::size_t size = 8 * kHugePageSize;
    // The block is freed untouched, and later allocations reuse its memory.
    const std::unique_ptr<std::byte[]> block(new (std::nothrow) std::byte[size]);
    void* start = block.get();
    if (start != nullptr && std::align(kHugePageSize, kHugePageSize, start, size) != nullptr)
        ::madvise(start, size / kHugePageSize * kHugePageSize, MADV_HUGEPAGE);
}

}  // namespace

int main(int argc, char** argv) {
    toolkit::openMissingStreams();
    keepMemory();
    useHugePages();
    // The output files must be written even if nobody reads the messages.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return run(argc, argv);
    } catch (const std::exception& failure) {
        return fail(failure.what(), quorvis::Outcome::Failed);
    }
}
