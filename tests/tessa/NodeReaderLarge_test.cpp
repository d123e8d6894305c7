// Documents that are endless, or grow without end: refused, and with a bounded amount of memory.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kDocument = std::size_t{1} << 30;
// A tree may take 1 GiB; the rest is for the process and for the parser, which keeps a table of names of its
// own.
constexpr long kMostKilobytes = 2L << 20;

// A process that reads the file and ends with 10 + its status when that was told with "document too large" or
// not at all, and with 1 in every other case.
pid_t startReader(const fs::path& path) {
    const pid_t child = fork();
    if (child != 0) return child;
    const Document document = readFile(path);
    const bool told =
        !document.complaints.empty() && document.complaints.back().message == L"document too large";
    _exit(told == (document.status != 0) ? 10 + document.status : 1);
}

// Up to a gigabyte of the text that `next` makes, as long as there is a reader.
template <class Next>
void writeDocument(const fs::path& pipe, const std::string& begin, Next next) {
    const int descriptor = open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
    std::string block = begin;
    for (std::size_t taken = 0; taken < kDocument;) {
        while (block.size() < 65536) next(block);
        const ssize_t count = write(descriptor, block.data(), block.size());
        if (count < 0) break;
        taken += static_cast<std::size_t>(count);
        block.erase(0, static_cast<std::size_t>(count));
    }
    close(descriptor);
}

struct Outcome {
    int exitCode;
    long peakKilobytes;
};

template <class Next>
Outcome readEndless(const std::string& begin, Next next) {
    const zavtest::ScratchDir directory;
    const fs::path pipe = directory.path() / "pipe";
    if (mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR) != 0) throw std::runtime_error("mkfifo");
    const auto before = std::signal(SIGPIPE, SIG_IGN);
    const pid_t child = startReader(pipe);
    writeDocument(pipe, begin, next);
    std::signal(SIGPIPE, before);
    int status = 0;
    rusage usage = {};
    if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status)) return {-1, 0};
    return {WEXITSTATUS(status), usage.ru_maxrss};
}

void expectRefused(const Outcome& outcome) {
    EXPECT_EQ(outcome.exitCode, 11);
    EXPECT_LT(outcome.peakKilobytes, kMostKilobytes);
}

TEST(NodeReaderLarge, EndlessElementsAreRefused) {
    expectRefused(
        readEndless("<r>", [](std::string& block) { block += "<Field name=\"x\">value</Field>\n"; }));
}

TEST(NodeReaderLarge, EndlessTextIsRefused) {
    expectRefused(readEndless("<r>", [](std::string& block) { block += "some text "; }));
}

TEST(NodeReaderLarge, EndlessDepthIsRefused) {
    expectRefused(readEndless("", [](std::string& block) { block += "<a>"; }));
}

TEST(NodeReaderLarge, EndlesslyManyNamesAreRefused) {
    expectRefused(readEndless("<r>", [number = 0](std::string& block) mutable {
        block += "<e" + std::to_string(++number) + "/>";
    }));
}

// Attributes with defaults add what the file does not hold.
TEST(NodeReaderLarge, LargeDefaultsOfManyElementsAreRefused) {
    const std::string begin = "<!DOCTYPE r [<!ATTLIST a x CDATA '" + std::string(1000000, 'x') + "'>]><r>";
    expectRefused(readEndless(begin, [](std::string& block) { block += "<a/>"; }));
}

TEST(NodeReaderLarge, WhatIsDroppedCostsNoMemory) {
    const std::string comment = "<!-- " + std::string(1000, 'x') + " -->\n";
    const Outcome outcome = readEndless("<!-- -->", [&](std::string& block) { block += comment; });
    EXPECT_EQ(outcome.exitCode, 1) << "not too large, but without an element";
    EXPECT_LT(outcome.peakKilobytes, 1L << 17);
}

}  // namespace
}  // namespace tessa::test
