// Output on a terminal, none of which must reach a file or a pipe.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "cli/terminal/PrintableText.h"
#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

class TerminalOutputTest : public testing::Test {
  protected:
    Process hw(std::vector<std::string> arguments, const std::string& scannerName = "copies") {
        arguments.insert(arguments.begin(), {"hw", "--toolkit", scanner(scannerName)});
        return Process(arguments).environment("ZAVTEST_OUTPUT", prepared_);
    }
    // The width of the widest line.
    static int width(const std::string& text) {
        int widest = 0;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            line.erase(std::remove(line.begin(), line.end(), '\r'), line.end());
            widest = std::max(widest, zavcli::columnsOf(line));
        }
        return widest;
    }

    ScratchDir scratch_;
    std::string prepared_ = scratch_.write("prepared.xml", kPreparedOutput).string();
};

TEST_F(TerminalOutputTest, ProgressBarAdvancesAndDisappears) {
    const Ended ended = hw({"--group", "Processor", "--group", "Memory"}).errorTerminal(80).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_NE(std::string::npos, ended.err.find("] 0/2 ")) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("] 1/2 Processor")) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("] 2/2 Memory")) << ended.err;
    EXPECT_TRUE(ended.err.ends_with("\r\x1b[K")) << ended.err;
}

TEST_F(TerminalOutputTest, ProgressBarFitsTheTerminal) {
    const std::string err = hw({}).errorTerminal(45).run().err;
    std::istringstream bars(err);
    int count = 0;
    for (std::string bar; std::getline(bars, bar, '\r'); ++count) {
        if (bar.starts_with("\x1b[K")) bar.erase(0, 3);
        EXPECT_LT(zavcli::columnsOf(bar), 45) << bar;
    }
    EXPECT_GT(count, 48);
}

TEST_F(TerminalOutputTest, ProgressOfSignaturesAdvancesAndDisappears) {
    const std::string file =
        scratch_
            .write(
                "s.xml",
                "<Signatures><Signature guid=\"a\" name=\"a\"><Match><File path=\"/\"/></Match></Signature>"
                "<Signature guid=\"b\" name=\"b\"><Match><File path=\"/\"/></Match></Signature></Signatures>")
            .string();
    const Ended ended = Process({"sw", file}).locationFile(std::nullopt).errorTerminal(80).run();
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("] 0 %")) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("] 100 %")) << ended.err;
    EXPECT_TRUE(ended.err.ends_with("\r\x1b[K")) << ended.err;
    EXPECT_EQ("", Process({"sw", file}).locationFile(std::nullopt).run().err);
}

TEST_F(TerminalOutputTest, NoProgressBarWithoutATerminal) {
    EXPECT_EQ("", hw({}).run().err);
    EXPECT_EQ("", hw({}).outputTerminal(80).run().err);
}

TEST_F(TerminalOutputTest, NoProgressBarOnDumbTerminals) {
    EXPECT_EQ("", hw({}).errorTerminal(80).environment("TERM", "dumb").run().err);
    EXPECT_EQ("", hw({}).errorTerminal(80).environment("TERM", std::nullopt).run().err);
}

TEST_F(TerminalOutputTest, ErrorsReplaceTheBarOnSeparateLines) {
    const Ended ended = hw({}, "fails").errorTerminal(80).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_NE(std::string::npos, ended.err.find("\r\x1b[Kzav: Exit code: 3 (ERROR)\r\n")) << ended.err;
    EXPECT_NE(std::string::npos, ended.err.find("\r\x1b[Kzav: the scanner ")) << ended.err;
}

TEST_F(TerminalOutputTest, TableFitsTheTerminal) {
    const std::string narrow = hw({}).outputTerminal(50).run().out;
    const std::string wide = hw({}).outputTerminal(140).run().out;
    EXPECT_LE(width(narrow) - static_cast<int>(std::string("\x1b[1m\x1b[0m").size()), 50);
    EXPECT_GT(width(wide), 100);
}

TEST_F(TerminalOutputTest, TableWidthInAPipeFollowsColumns) {
    EXPECT_LE(width(hw({}).environment("COLUMNS", "60").run().out), 60);
    EXPECT_GT(width(hw({}).environment("COLUMNS", "140").run().out), 100);
    EXPECT_LE(width(hw({}).run().out), 100);
}

TEST_F(TerminalOutputTest, HeadingsAreBoldOnlyOnATerminal) {
    EXPECT_NE(std::string::npos, hw({}).outputTerminal(80).run().out.find("\x1b[1mProcessor\x1b[0m"));
    EXPECT_EQ(std::string::npos,
              hw({}).outputTerminal(80).environment("NO_COLOR", "1").run().out.find('\x1b'));
    EXPECT_EQ(std::string::npos, hw({}).run().out.find('\x1b'));
}

TEST_F(TerminalOutputTest, ControlCharactersInArgumentsAreEscaped) {
    const Ended ended = hw({"--group", "\x1b[2J"}).run();
    EXPECT_EQ(2, ended.status);
    EXPECT_EQ(std::string::npos, ended.err.find('\x1b'));
    EXPECT_NE(std::string::npos, ended.err.find("unknown group '\\u001b[2J'"));
}

}  // namespace
}  // namespace zavtest
