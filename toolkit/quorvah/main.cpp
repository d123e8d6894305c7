#include <malloc.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#include "schema/Catalogue.h"
#include "schema/FieldList.h"
#include "toolkit/machine/files/OpenStreams.h"
#include "toolkit/quorvah/scan/CommandLine.h"
#include "toolkit/quorvah/scan/HardwareScan.h"

namespace {

constexpr int kOutputFailed = 1;
constexpr int kBadUsage = 2;

int complain(const std::string& message, int status) {
    std::fprintf(stderr, "quorvah: %s\n", message.c_str());
    return status;
}

int listFields(bool json) {
    const auto groups = schema::allGroups();
    const std::string list = json ? schema::fieldJson(groups) : schema::fieldText(groups);
    const bool written = std::fputs(list.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return written ? 0 : complain("the list cannot be written", kOutputFailed);
}

int run(int argc, char** argv) {
    // A program with other rights than its caller must not be steered by the caller's environment.
    toolkit::quorvah::CommandLine line = toolkit::quorvah::parseCommandLine(argc, argv, ::secure_getenv);
    switch (line.action) {
        case toolkit::quorvah::Action::Help:
            std::fputs(toolkit::quorvah::kUsage, stdout);
            return 0;
        case toolkit::quorvah::Action::Version:
            std::puts("quorvah " QUORVAH_VERSION);
            return 0;
        case toolkit::quorvah::Action::ListFields:
            return listFields(line.json);
        case toolkit::quorvah::Action::Refuse:
            return complain(line.message + " (--help shows the usage)", kBadUsage);
        case toolkit::quorvah::Action::Scan:
            break;
    }
    try {
        toolkit::quorvah::runHardwareScan(std::move(line.options));
    } catch (const toolkit::quorvah::BadInput& bad) {
        return complain(bad.what(), kBadUsage);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    toolkit::openMissingStreams();
    // Memory that was let go is used again rather than given back and fetched anew: the scanner lives
    // shortly.
    constexpr int kMegabyte = 1 << 20;
    ::mallopt(M_MMAP_THRESHOLD, 32 * kMegabyte);
    ::mallopt(M_TRIM_THRESHOLD, 256 * kMegabyte);
    ::mallopt(M_TOP_PAD, kMegabyte);
    // The output file counts even when nobody reads the progress any more.
    std::signal(SIGPIPE, SIG_IGN);
    try {
        return run(argc, argv);
    } catch (const std::exception& failure) {
        return complain(failure.what(), kOutputFailed);
    }
}
