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

using Arguments = std::vector<std::string>;

// A program of tests/intake/children. They are built in the directory of this one.
std::string child(const std::string& name) {
    return fs::canonical("/proc/self/exe").parent_path() / ("intake_child_" + name);
}

class ScannerProcessTest : public testing::Test {
  protected:
    struct Outcome {
        bool started = false;
        int waited = -1;
        int code = -1;

        bool operator==(const Outcome&) const = default;
    };

    static Outcome run(ZAVlog* log, const Arguments& arguments,
                       const std::wstring& installDir = L"/opt/zav") {
        ScannerProcess scanner(log, kFunction, arguments, installDir);
        if (!scanner.started()) return {};
        const int waited = scanner.drain();
        return {true, waited, scanner.check()};
    }
    Outcome run(const Arguments& arguments, const std::wstring& installDir = L"/opt/zav") {
        recorder_.messages.clear();
        return run(&log_, arguments, installDir);
    }

    // A child that writes these bytes and exits with this status.
    Outcome runWriting(const std::string& bytes, int status = 0) {
        return run({child("CopyFile"), directory_.write("bytes", bytes), std::to_string(status)});
    }

    static Message line(const std::string& text) { return {2, 3, kFunction, "STDOUT data: [" + text + "]"}; }
    static Message ok() { return {2, 3, kFunction, "Exit code: 0 (OK)"}; }
    static Message error(int code) {
        return {0, 3, kFunction, "Exit code: " + std::to_string(code) + " (ERROR)"};
    }

    // The lines in the brackets of the messages about scanner output.
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
    const std::string bytes = directory_.write("bytes", std::string(3'000'000, 'x'));
    ZAVlog silent(3, nullptr, nullptr);
    for (ZAVlog* const log : {&silent, static_cast<ZAVlog*>(nullptr)}) {
        EXPECT_EQ(run(log, {child("CopyFile"), bytes, "4"}), (Outcome{true, 4, 4}));
    }
}

// A host that lets the child continue after it has received the child's first line.
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
    EXPECT_EQ(run(&log, {child("WaitAfterLine"), pipe}), (Outcome{true, 0, 0}));
    EXPECT_EQ(host.texts, (std::vector<std::string>{"STDOUT data: [first]", "STDOUT data: [second]",
                                                    "Exit code: 0 (OK)"}));
    close(host.descriptor);
}

TEST_F(ScannerProcessTest, ExitStatusIsReturnedAndLogged) {
    for (const int status : {1, 2, 3, 103, 255}) {
        EXPECT_EQ(runWriting("a\nb", status), (Outcome{true, status, status}));
        EXPECT_EQ(recorder_.messages, (std::vector<Message>{line("a"), error(status)}));
    }
}

TEST_F(ScannerProcessTest, EndBySignalIsAnError) {
    for (const int signal : {SIGKILL, SIGTERM}) {
        EXPECT_EQ(run({child("DieBySignal"), std::to_string(signal)}),
                  (Outcome{true, 128 + signal, 128 + signal}));
        EXPECT_EQ(recorder_.messages, (std::vector<Message>{line("line"), error(128 + signal)}));
    }
}

TEST_F(ScannerProcessTest, FailedLaunchIsLoggedWithItsReason) {
    const std::string noProgram = directory_.write("no program", "text");
    fs::permissions(noProgram, fs::perms::owner_all);
    const std::string notExecutable = directory_.write("not executable", "text");
    const struct {
        Arguments arguments;
        std::string reason;
    } cases[] = {
        {{}, "\"\": no program is named"},
        {{""}, "\"\": ENOENT (no such file or directory)"},
        {{"/missing/quorvah", "-c"}, "\"/missing/quorvah\": ENOENT (no such file or directory)"},
        {{directory_.path()}, "\"" + directory_.path().string() + "\": EACCES (permission denied)"},
        {{notExecutable}, "\"" + notExecutable + "\": EACCES (permission denied)"},
        {{noProgram}, "\"" + noProgram + "\": ENOEXEC (exec format error)"},
        {{child("ShowWords"), "-c", std::string("a\0b", 3)},
         "\"" + child("ShowWords") + "\": its argument 2 holds a NUL"},
        {{std::string("/opt\0/x", 7)}, "\"/opt\": its path holds a NUL"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(run(each.arguments), Outcome());
        EXPECT_EQ(recorder_.messages,
                  (std::vector<Message>{{0, 3, kFunction, "Cannot start " + each.reason},
                                        {0, 3, kFunction, "Execution of command failed.."}}));
    }
}

TEST_F(ScannerProcessTest, ScannerRunsWithoutALog) {
    const std::string bytes = directory_.write("bytes", "a\nb\n");
    EXPECT_EQ(run(nullptr, {child("CopyFile"), bytes, "0"}), (Outcome{true, 0, 0}));
    EXPECT_EQ(run(nullptr, {child("CopyFile"), bytes, "7"}), (Outcome{true, 7, 7}));
    EXPECT_EQ(run(nullptr, {"/missing/quorvah"}), Outcome());
}

TEST_F(ScannerProcessTest, EachArgumentReachesTheScannerAsItIs) {
    const Arguments arguments = {
        child("ShowWords"), "", " ", "\t", "a b", "\"", "a\"b", "\\\"", "-o", "--", "\xC3\xA4\xFF",
        "$(id);`id`|*"};
    Arguments expected;
    for (const std::string& argument : arguments) expected.push_back("<" + argument + ">");
    EXPECT_EQ(run(arguments), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines(), expected);
}

const char* const kSearchPath = "DYLD_LIBRARY_PATH";

TEST_F(ScannerProcessTest, SearchPathIsAddedAsTheLastEntryOfTheHostsEnvironment) {
    const zavtest::EnvironmentVariable none(kSearchPath, std::nullopt);
    std::vector<std::string> expected;
    for (char** entry = hostEnvironment(); *entry != nullptr; ++entry) expected.emplace_back(*entry);
    expected.emplace_back("DYLD_LIBRARY_PATH=/opt/zav");
    EXPECT_EQ(run({child("ShowEntries")}), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines(), expected);
}

TEST_F(ScannerProcessTest, SearchPathOfTheHostIsExtendedInPlace) {
    const zavtest::EnvironmentVariable path(kSearchPath, "/usr/lib");
    const zavtest::EnvironmentVariable behind("ZAVTEST_BEHIND", "1");
    std::vector<std::string> expected;
    for (char** entry = hostEnvironment(); *entry != nullptr; ++entry) expected.emplace_back(*entry);
    const auto place = std::find(expected.begin(), expected.end(), "DYLD_LIBRARY_PATH=/usr/lib");
    ASSERT_LT(place - expected.begin(), static_cast<std::ptrdiff_t>(expected.size()) - 1);
    *place = "DYLD_LIBRARY_PATH=/opt/zav:/usr/lib";
    EXPECT_EQ(run({child("ShowEntries")}), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines(), expected);
}

TEST_F(ScannerProcessTest, DirectoryIsNarrowedToItsLowBytes) {
    const zavtest::EnvironmentVariable none(kSearchPath, std::nullopt);
    EXPECT_EQ(run({child("ShowEntries")}, L"/d\xE4\x20AC/\x1F62F"), (Outcome{true, 0, 0}));
    EXPECT_EQ(lines().back(), "DYLD_LIBRARY_PATH=/d\xE4\xAC/\x2F");
}

TEST_F(ScannerProcessTest, NothingIsLeftOfARun) {
    const std::size_t descriptors = zavtest::openDescriptors();
    runWriting("a\n");
    runWriting("a\n", 3);
    run({"/missing/quorvah"});
    {
        const ScannerProcess never(&log_, kFunction, {child("ShowEntries")}, L"/opt/zav");
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
    const std::string bytes = directory_.write("bytes", std::string(300000, '\n'));
    EXPECT_THROW(run(&throwing, {child("CopyFile"), bytes, "0"}), int);
    EXPECT_THROW(run(&throwing, {"/missing/quorvah"}), int);
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
