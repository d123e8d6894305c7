// Runs `zav` alone, misspelt command lines, and `--csv-dir`.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "cli/terminal/PrintableText.h"
#include "tests/cli/CsvReader.h"
#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

namespace fs = std::filesystem;

Ended zav(std::vector<std::string> arguments) {
    return Process(std::move(arguments)).locationFile(std::nullopt).run();
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(Summary, ZavAloneTellsWhatTheMachineIsAndNamesTheCommands) {
    const Ended ended = zav({});
    ASSERT_EQ(0, ended.status) << ended.err;
    for (const char* part : {"\n  System ", "\n  Processor ", "\n  Memory ",
                             "hw, sw, facts, sbom, report, export, diff", "zav --help"})
        EXPECT_TRUE(contains(ended.out, part)) << part << "\n" << ended.out;
}

TEST(Summary, ItFitsTerminalsOfEveryWidthAndOneScreen) {
    for (const int columns : {40, 80, 200}) {
        const Ended ended =
            Process({}).locationFile(std::nullopt).outputTerminal(columns).environment("NO_COLOR", "1").run();
        std::istringstream lines(ended.out);
        int count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            line.erase(line.find_last_not_of('\r') + 1);  // that the terminal adds
            EXPECT_LE(zavcli::columnsOf(line), columns) << line;
        }
        if (columns >= 80) {
            EXPECT_LE(count, 24) << ended.out;
        }
        EXPECT_FALSE(contains(ended.out, "\x1b[")) << "no colours with NO_COLOR";
    }
}

TEST(Summary, ColoursAreForTerminalsOnly) {
    const Ended terminal = Process({})
                               .locationFile(std::nullopt)
                               .outputTerminal(80)
                               .environment("NO_COLOR", std::nullopt)
                               .environment("TERM", "xterm")
                               .run();
    EXPECT_TRUE(contains(terminal.out, "\x1b[1m"));
    EXPECT_FALSE(contains(zav({}).out, "\x1b["));
}

TEST(Summary, AClosedStandardOutputIsAFailure) {
    const Ended ended = Process({}).locationFile(std::nullopt).without({1}).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_TRUE(contains(ended.err, "cannot write to standard output")) << ended.err;
}

TEST(Summary, HelpStaysWithTheOption) {
    const Ended ended = zav({"--help"});
    EXPECT_EQ(0, ended.status);
    EXPECT_TRUE(contains(ended.out, "Examples:"));
    EXPECT_FALSE(contains(ended.out, "Installed:")) << "this is the directory of a build";
}

TEST(Summary, HelpNamesThePlacesOfAnInstallation) {
    const ScratchDir scratch;
    const fs::path bin = scratch.write("bin/x", "").parent_path();
    fs::copy_file(ZAVTEST_COMMAND, bin / "zav");
    const fs::path shared = scratch.write("share/zav/hardware.schema.json", "{}").parent_path();
    const Ended ended = Process({"--help"}).program((bin / "zav").string()).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_TRUE(contains(ended.out, "  signatures  " + (shared / "signatures").string() + "\n")) << ended.out;
    EXPECT_TRUE(contains(ended.out, "  schemas     " + shared.string() + "\n")) << ended.out;
}

TEST(Summary, MisspeltWordsGetASuggestion) {
    const std::vector<std::pair<std::vector<std::string>, std::string>> cases{
        {{"hw", "--fromat", "json"}, "did you mean --format?"},
        {{"hw", "--gruop=Processor"}, "did you mean --group?"},
        {{"grops"}, "did you mean groups?"},
        {{"fact"}, "did you mean facts?"},
        {{"hww"}, "unknown command 'hww'; did you mean hw?"},
        {{"hw", "--group", "Procesor"}, "did you mean Processor"}};
    for (const auto& [words, expected] : cases) {
        const Ended ended = zav(words);
        EXPECT_EQ(2, ended.status);
        EXPECT_TRUE(contains(ended.err, expected)) << ended.err;
    }
    EXPECT_FALSE(contains(zav({"hw", "--zzzzzz"}).err, "did you mean"));
}

class CsvDirectory : public testing::Test {
  protected:
    Ended hw(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"hw", "--toolkit", scanner("copies")});
        return Process(arguments)
            .environment("ZAVTEST_OUTPUT", scratch_.write("prepared.xml", kPreparedOutput).string())
            .run();
    }
    std::vector<CsvRecord> read(const std::string& name) const {
        return readCsv(readAll((directory_ / name).string()));
    }

    ScratchDir scratch_;
    fs::path directory_ = scratch_.path() / "csv";
};

TEST_F(CsvDirectory, HoldsATablePerGroupAndTheStatuses) {
    const Ended ended = hw({"--csv-dir", directory_.string()});
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ("", ended.out);
    const std::vector<CsvRecord> processors = read("Processor.csv");
    ASSERT_EQ(3U, processors.size());
    EXPECT_EQ("DeviceID", processors[0][0]);
    EXPECT_EQ("cpu1", processors[2][0]);
    EXPECT_EQ("A, \"B\" & <C>", processors[1][1]);
    EXPECT_EQ(1U, read("Storage.csv").size()) << "a header without records";
    const std::vector<CsvRecord> statuses = read("_status.csv");
    EXPECT_EQ(49U, statuses.size());
    EXPECT_EQ((CsvRecord{"Processor", "unknown", "", "2"}), statuses[2]);
}

TEST_F(CsvDirectory, FilesAreReplacedAndLinksAreNotFollowed) {
    fs::create_directory(directory_);
    const fs::path victim = scratch_.write("victim", "safe");
    fs::create_symlink(victim, directory_ / "Processor.csv");
    ASSERT_EQ(0, hw({"--csv-dir", directory_.string()}).status);
    EXPECT_EQ("safe", readAll(victim.string()));
    EXPECT_FALSE(fs::is_symlink(directory_ / "Processor.csv"));
    EXPECT_EQ(3U, read("Processor.csv").size());
}

TEST_F(CsvDirectory, WhatCannotBeADirectoryIsRefusedBeforeTheScan) {
    const Ended ended = hw({"--csv-dir", scratch_.write("file", "").string()});
    EXPECT_EQ(1, ended.status);
    EXPECT_TRUE(contains(ended.err, "is not a directory")) << ended.err;
    EXPECT_EQ(2, hw({"--csv-dir", directory_.string(), "--output", "x"}).status);
    EXPECT_EQ(2, hw({"--csv-dir", directory_.string(), "--format", "json"}).status);
    EXPECT_EQ(0, hw({"--csv-dir", directory_.string(), "--format", "CSV"}).status);
}

}  // namespace
}  // namespace zavtest
