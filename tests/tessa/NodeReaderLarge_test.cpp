// Documents that are large or grow without end are refused, with a bounded amount of memory.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

namespace fs = std::filesystem;

// A tree may take 1 GiB. The rest is for the process and for the parser, which keeps its own table of names.
constexpr long kMaxKilobytes = 2L << 20;

// Reads the file in a child. It exits with 10 + the status if the only error was "document too large" or there was
// none, otherwise with 1.
pid_t startReader(const fs::path& path) {
    const pid_t child = fork();
    if (child != 0) return child;
    const Document document = readFile(path);
    const bool told =
        !document.diagnostics.empty() && document.diagnostics.back().message == L"document too large";
    _exit(told == (document.status != 0) ? 10 + document.status : 1);
}

// A document of this size made of the texts that `next` returns. Its root never ends.
template <class Next>
void writeDocument(const fs::path& path, const std::string& begin, std::size_t size, Next next) {
    std::ofstream file(path, std::ios::binary);
    std::string block = begin;
    for (std::size_t written = 0; written < size;) {
        while (block.size() < 65536) next(block);
        file << block;
        written += block.size();
        block.clear();
    }
}

struct Outcome {
    int exitCode;
    long peakKilobytes;
};

template <class Next>
Outcome readLarge(std::size_t megabytes, const std::string& begin, Next next) {
    const zavtest::ScratchDir directory;
    const fs::path path = directory.path() / "large.xml";
    writeDocument(path, begin, megabytes << 20, next);
    const pid_t child = startReader(path);
    int status = 0;
    rusage usage = {};
    if (wait4(child, &status, 0, &usage) != child || !WIFEXITED(status)) return {-1, 0};
    return {WEXITSTATUS(status), usage.ru_maxrss};
}

void expectRefused(const Outcome& outcome) {
    EXPECT_EQ(outcome.exitCode, 11);
    EXPECT_LT(outcome.peakKilobytes, kMaxKilobytes);
}

TEST(NodeReaderLarge, EndlessElementsAreRefused) {
    expectRefused(
        readLarge(400, "<r>", [](std::string& block) { block += "<Field name=\"x\">value</Field>\n"; }));
}

TEST(NodeReaderLarge, EndlessTextIsRefused) {
    expectRefused(readLarge(400, "<r>", [](std::string& block) { block += "some text "; }));
}

TEST(NodeReaderLarge, EndlessDepthIsRefused) {
    expectRefused(readLarge(100, "", [](std::string& block) { block += "<a>"; }));
}

TEST(NodeReaderLarge, EndlesslyManyNamesAreRefused) {
    expectRefused(readLarge(100, "<r>", [number = 0](std::string& block) mutable {
        block += "<e" + std::to_string(++number) + "/>";
    }));
}

// Default attributes take memory that is not proportional to the file.
TEST(NodeReaderLarge, LargeDefaultsOfManyElementsAreRefused) {
    const std::string begin = "<!DOCTYPE r [<!ATTLIST a x CDATA '" + std::string(1000000, 'x') + "'>]><r>";
    expectRefused(readLarge(1, begin, [](std::string& block) { block += "<a/>"; }));
}

TEST(NodeReaderLarge, WhatIsDroppedCostsNoMemory) {
    const std::string comment = "<!-- " + std::string(1000, 'x') + " -->\n";
    const Outcome outcome = readLarge(400, "<!-- -->", [&](std::string& block) { block += comment; });
    EXPECT_EQ(outcome.exitCode, 1) << "not too large, but without an element";
    EXPECT_LT(outcome.peakKilobytes, 1L << 17);
}

}  // namespace
}  // namespace tessa::test
