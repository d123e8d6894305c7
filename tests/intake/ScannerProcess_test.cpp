#include "intake/ScannerProcess.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <functional>

#include "intake/HostEnvironment.h"
#include "kest/Text.h"
#include "tests/support/Descriptors.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/ScratchDir.h"

namespace zav::test {
namespace {

namespace fs = std::filesystem;
using zavtest::LogRecorder;
using zavtest::Message;

const char* const kFunction = "ZAV_hw_run";

// A program of tests/intake/children, which are built beside this one.
std::wstring child(const std::string& name) {
    return kest::widen((fs::canonical("/proc/self/exe").parent_path() / ("intake_child_" + name)).string());
}

class ScannerProcessTest : public testing::Test {
  protected:
    struct Outcome {
        bool started = false;
        int waited = -1;
        int code = -1;

        bool operator==(const Outcome&) const = default;
    };

    static Outcome run(ZAVlog* log, const std::wstring& command,
                       const std::wstring& installDir = L"/opt/zav") {
        ScannerProcess scanner(log, kFunction, command, installDir);
        if (!scanner.started()) return {};
        const int waited = scanner.drain();
        return {true, waited, scanner.check()};
    }
    Outcome run(const std::wstring& command, const std::wstring& installDir = L"/opt/zav") {
        recorder_.messages.clear();
        return run(&log_, command, installDir);
    }

    // A child that writes these bytes and ends with this status.
    Outcome runWriting(const std::string& bytes, int status = 0) {
        return run(child("CopyFile") + L" \"" + kest::widen(directory_.write("bytes", bytes).string()) +
                   L"\" " + std::to_wstring(status));
    }

    static Message line(const std::string& text) { return {2, 3, kFunction, "STDOUT data: [" + text + "]"}; }
    static Message ok() { return {2, 3, kFunction, "Exit code: 0 (OK)"}; }
    static Message error(int code) {
        return {0, 3, kFunction, "Exit code: " + std::to_string(code) + " (ERROR)"};
    }

    // The texts between the brackets of the messages about lines.
    std::vector<std::string> lines() const {
        std::vector<std::string> result;
        for (const Message& message : recorder_.messages) {
            if (message.text.starts_with("STDOUT data: [")) {
                result.push_back(message.text.substr(14, message.text.size() - 15));
            }
        }
        return result;
    }

    zavtest::ScratchDir directory_;
    LogRecorder recorder_;
    ZAVlog log_{3, LogRecorder::callback, &recorder_};
};

TEST_F(ScannerProcessTest, EachFinishedLineIsLoggedWithoutItsEnd) {
    const struct {
        std::string bytes;
        std::vector<Message> messages;
    } cases[] = {
        {"a\r\nb\n", {line("a"), line("b"), ok()}},
        {"a\nb", {line("a"), ok()}},
        {"", {ok()}},
        {"a", {ok()}},
        {"\n", {line(""), ok()}},
        {"\n\n\r\n", {line(""), line(""), line(""), ok()}},
        {"\ra\rb\r\r\n", {line("ab"), ok()}},
        {"a\r", {ok()}},
        {" a\tb %s %d \n", {line(" a\tb %s %d "), ok()}},
        {"[x]\n", {line("[x]"), ok()}},
        {"\xC3\xA4\xFF\x01\n", {line("\xC3\xA4\xFF\x01"), ok()}},
        {std::string("a\0b\nc\n", 6), {line("a"), line("c"), ok()}},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(runWriting(each.bytes), (Outcome{true, 0, 0}));
        EXPECT_EQ(recorder_.messages, each.messages) << each.bytes;
    }
}

TEST_F(ScannerProcessTest, LinesOfAnyLengthAndNumberAreLogged) {
    const std::string longLine(1000000, 'x');
    EXPECT_EQ(runWriting(longLine + "\n" + longLine), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines(), std::vector<std::string>{longLine});
    std::string bytes;
    std::vector<std::string> expected;
    for (int i = 0; i < 20000; ++i) {
        expected.push_back("line " + std::to_string(i));
        bytes += expected.back() + "\r\n";
    }
    EXPECT_EQ(runWriting(bytes), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines(), expected);
}

TEST_F(ScannerProcessTest, OutputThatNobodyHearsIsReadToItsEnd) {
    const std::wstring bytes = kest::widen(directory_.write("bytes", std::string(3'000'000, 'x')).string());
    ZAVlog silent(3, nullptr, nullptr);
    for (ZAVlog* const log : {&silent, static_cast<ZAVlog*>(nullptr)}) {
        EXPECT_EQ(run(log, child("CopyFile") + L" \"" + bytes + L"\" 4"), (Outcome{true, 4, 4}));
    }
}

// A host that lets the child go on when it has seen the child's first line.
struct WaitingHost {
    static void callback(int, int, void* userData, const char*, const char* message) {
        auto& host = *static_cast<WaitingHost*>(userData);
        host.texts.emplace_back(message);
        if (host.texts.size() == 1) host.descriptor = open(host.pipe.c_str(), O_WRONLY | O_CLOEXEC);
    }

    std::string pipe;
    int descriptor = -1;
    std::vector<std::string> texts;
};

TEST_F(ScannerProcessTest, LineIsLoggedWhileTheScannerStillRuns) {
    const std::string pipe = (directory_.path() / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), S_IRUSR | S_IWUSR), 0);
    WaitingHost host{pipe, -1, {}};
    ZAVlog log(3, WaitingHost::callback, &host);
    EXPECT_EQ(run(&log, child("WaitAfterLine") + L" " + kest::widen(pipe)), (Outcome{true, 0, 0}));
    EXPECT_EQ(host.texts, (std::vector<std::string>{"STDOUT data: [first]", "STDOUT data: [second]",
                                                    "Exit code: 0 (OK)"}));
    close(host.descriptor);
}

TEST_F(ScannerProcessTest, ExitStatusIsToldAndLogged) {
    for (const int status : {1, 2, 3, 103, 255}) {
        EXPECT_EQ(runWriting("a\nb", status), (Outcome{true, status, status}));
        EXPECT_EQ(recorder_.messages, (std::vector<Message>{line("a"), error(status)}));
    }
}

TEST_F(ScannerProcessTest, EndBySignalIsAnError) {
    for (const int signal : {SIGKILL, SIGTERM}) {
        EXPECT_EQ(run(child("DieBySignal") + L" " + std::to_wstring(signal)),
                  (Outcome{true, 128 + signal, 128 + signal}));
        EXPECT_EQ(recorder_.messages, (std::vector<Message>{line("line"), error(128 + signal)}));
    }
}

TEST_F(ScannerProcessTest, FailedLaunchIsLogged) {
    const std::wstring noProgram = kest::widen(directory_.write("no program", "text").string());
    for (const std::wstring& command :
         {std::wstring(), std::wstring(L"   "), std::wstring(L"/missing/quorvah -c \"x\""),
          kest::widen(directory_.path().string()), L"\"" + noProgram + L"\""}) {
        EXPECT_EQ(run(command), Outcome());
        EXPECT_EQ(recorder_.messages,
                  (std::vector<Message>{{0, 3, kFunction, "Execution of command failed.."}}));
    }
}

TEST_F(ScannerProcessTest, WithoutALogTheScannerRunsAllTheSame) {
    const std::wstring bytes = kest::widen(directory_.write("bytes", "a\nb\n").string());
    EXPECT_EQ(run(nullptr, child("CopyFile") + L" " + bytes + L" 0"), (Outcome{true, 0, 0}));
    EXPECT_EQ(run(nullptr, child("CopyFile") + L" " + bytes + L" 7"), (Outcome{true, 7, 7}));
    EXPECT_EQ(run(nullptr, L"/missing/quorvah"), Outcome());
}

TEST_F(ScannerProcessTest, WordsInQuotesStayTogetherAndTheProgramIsSplitAtBlanks) {
    EXPECT_EQ(run(child("ShowWords") + L" -c \"/tmp/a b.xml_30\" -o \"/tmp/o\""), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines(), (std::vector<std::string>{"<" + kest::narrow(child("ShowWords")) + ">", "<-c>",
                                                 "</tmp/a b.xml_30>", "<-o>", "</tmp/o>"}));

    fs::create_directory(directory_.path() / "in stalled");
    const fs::path program = directory_.path() / "in stalled" / "quorvah";
    fs::create_symlink(fs::path(child("ShowWords")), program);
    fs::create_symlink(fs::path(child("ShowWords")), directory_.path() / "in");
    EXPECT_EQ(run(kest::widen(program.string()) + L" -c \"x y\""), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines(), (std::vector<std::string>{"<" + (directory_.path() / "in").string() + ">",
                                                 "<stalled/quorvah>", "<-c>", "<x y>"}));
}

const char* const kSearchPath = "DYLD_LIBRARY_PATH";

TEST_F(ScannerProcessTest, SearchPathIsAddedAsTheLastEntryOfTheHostsEnvironment) {
    const zavtest::EnvironmentVariable none(kSearchPath, std::nullopt);
    std::vector<std::string> expected;
    for (char** entry = hostEnvironment(); *entry != nullptr; ++entry) expected.emplace_back(*entry);
    expected.emplace_back("DYLD_LIBRARY_PATH=/opt/zav");
    EXPECT_EQ(run(child("ShowEntries")), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines(), expected);
}

TEST_F(ScannerProcessTest, SearchPathOfTheHostIsExtendedInItsPlace) {
    const zavtest::EnvironmentVariable path(kSearchPath, "/usr/lib");
    const zavtest::EnvironmentVariable behind("ZAVTEST_BEHIND", "1");
    std::vector<std::string> expected;
    for (char** entry = hostEnvironment(); *entry != nullptr; ++entry) expected.emplace_back(*entry);
    const auto place = std::find(expected.begin(), expected.end(), "DYLD_LIBRARY_PATH=/usr/lib");
    ASSERT_LT(place - expected.begin(), static_cast<std::ptrdiff_t>(expected.size()) - 1);
    *place = "DYLD_LIBRARY_PATH=/opt/zav:/usr/lib";
    EXPECT_EQ(run(child("ShowEntries")), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines(), expected);
}

TEST_F(ScannerProcessTest, DirectoryIsNarrowedToItsLowBytes) {
    const zavtest::EnvironmentVariable none(kSearchPath, std::nullopt);
    EXPECT_EQ(run(child("ShowEntries"), L"/d\xE4\x20AC/\x1F62F"), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines().back(), "DYLD_LIBRARY_PATH=/d\xE4\xAC/\x2F");
}

TEST_F(ScannerProcessTest, NothingIsLeftOfARun) {
    const std::size_t descriptors = zavtest::openDescriptors();
    runWriting("a\n");
    runWriting("a\n", 3);
    run(L"/missing/quorvah");
    {
        const ScannerProcess never(&log_, kFunction, child("ShowEntries"), L"/opt/zav");
        EXPECT_TRUE(never.started());
    }
    EXPECT_EQ(zavtest::openDescriptors(), descriptors);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
}

TEST_F(ScannerProcessTest, ThrowingCallbackLeavesNoChildBehind) {
    ZAVlog throwing(
        3, [](int, int, void*, const char*, const char*) { throw 7; }, nullptr);
    const std::size_t descriptors = zavtest::openDescriptors();
    const std::wstring bytes = kest::widen(directory_.write("bytes", std::string(300000, '\n')).string());
    EXPECT_THROW(run(&throwing, child("CopyFile") + L" " + bytes + L" 0"), int);
    EXPECT_THROW(run(&throwing, L"/missing/quorvah"), int);
    EXPECT_EQ(zavtest::openDescriptors(), descriptors);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(HostEnvironment, HoldsTheProcessEnvironmentAtTheMoment) {
    const auto holds = [](const std::string& wanted) {
        for (char** entry = hostEnvironment(); *entry != nullptr; ++entry) {
            if (wanted == *entry) return true;
        }
        return false;
    };
    EXPECT_FALSE(holds("ZAVTEST_NEW=1"));
    const zavtest::EnvironmentVariable variable("ZAVTEST_NEW", "1");
    EXPECT_TRUE(holds("ZAVTEST_NEW=1"));
}

}  // namespace
}  // namespace zav::test
