// A command that a signal ends leaves neither files nor processes behind.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

class SignalsTest : public testing::Test {
  protected:
    Process hw(std::vector<std::string> arguments, const std::string& scannerName = "waits") {
        arguments.insert(arguments.begin(), {"hw", "--toolkit", scanner(scannerName)});
        return Process(arguments)
            .environment("ZAVTEST_OUTPUT", prepared_)
            .environment("TEMP", temporary_.string());
    }
    // Calls `act` with the process id as soon as the scanner has printed a line.
    Ended whenScanning(Process process, const std::function<void(int)>& act) {
        bool done = false;
        return process
            .watch([&](const std::string& err, int pid) {
                if (done || err.find("STDOUT data") == std::string::npos) return;
                done = true;
                act(pid);
            })
            .run();
    }
    std::vector<std::string> leftTemporary() const {
        std::vector<std::string> names;
        for (const auto& file : std::filesystem::directory_iterator(temporary_))
            names.push_back(file.path().filename().string());
        return names;
    }
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }

    ScratchDir scratch_;
    std::string prepared_ = scratch_.write("prepared.xml", kPreparedOutput).string();
    std::filesystem::path temporary_ = scratch_.write("tmp/x", "").parent_path();

    void SetUp() override {
        std::filesystem::remove(temporary_ / "x");
        std::filesystem::create_directory(path("d"));
    }
};

using Names = std::vector<std::string>;

// How a signal is sent: Ctrl-C on a terminal also reaches the scanner, a service manager signals only the command.
struct Sent {
    int signal;
    bool toGroup;
};

void PrintTo(const Sent& sent, std::ostream* out) {
    *out << sent.signal << (sent.toGroup ? " to all" : "");
}

class EndingSignalTest : public SignalsTest, public testing::WithParamInterface<Sent> {};

TEST_P(EndingSignalTest, EndsTheScannerAndLeavesNothing) {
    const Sent sent = GetParam();
    const Ended ended = whenScanning(hw({"-vv", "--output", path("d/out")}),
                                     [&](int pid) { kill(sent.toGroup ? -pid : pid, sent.signal); });
    EXPECT_EQ(sent.signal, ended.signal);
    EXPECT_EQ("", ended.out);
    EXPECT_EQ(Names{}, leftTemporary());
    EXPECT_TRUE(std::filesystem::is_empty(path("d")));
}

std::vector<Sent> endingSignals() {
    std::vector<Sent> all{{SIGINT, true}, {SIGQUIT, true}};
    for (const int signal :
         {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGALRM, SIGUSR1, SIGUSR2, SIGXCPU, SIGXFSZ, SIGVTALRM,
          SIGPROF, SIGIO, SIGPWR, SIGSTKFLT, SIGSYS, SIGTRAP, SIGRTMIN, SIGRTMAX})
        all.push_back({signal, false});
#ifndef ZAV_SANITIZED
    // Sanitizers handle these signals themselves.
    for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGILL, SIGFPE}) all.push_back({signal, false});
#endif
    return all;
}

INSTANTIATE_TEST_SUITE_P(Each, EndingSignalTest, testing::ValuesIn(endingSignals()), [](const auto& each) {
    return std::to_string(each.param.signal) + (each.param.toGroup ? "ToAll" : "");
});

TEST_F(SignalsTest, ScannersThatIgnoreSignalsAreKilledWithTheirChildren) {
    int scannerProcess = 0;
    int itsChild = 0;
    const Ended ended = whenScanning(hw({"-vv"}, "stubborn"), [](int pid) { kill(pid, SIGTERM); });
    EXPECT_EQ(SIGTERM, ended.signal);
    const std::size_t told = ended.err.find("STDOUT data: [processes ");
    ASSERT_NE(std::string::npos, told) << ended.err;
    ASSERT_EQ(2, std::sscanf(ended.err.c_str() + told, "STDOUT data: [processes %d and %d.]", &scannerProcess,
                             &itsChild));
    for (const int process : {scannerProcess, itsChild}) {
        EXPECT_EQ(-1, kill(process, 0));
        EXPECT_EQ(ESRCH, errno);
    }
    EXPECT_EQ(Names{}, leftTemporary());
}

TEST_F(SignalsTest, ClosedPipeEndsTheCommandBySignal) {
    const Ended quiet = hw({}, "copies").unread(1).run();
    EXPECT_EQ(SIGPIPE, quiet.signal);
    const Ended talking = hw({"-vv"}).unread(2).run();
    EXPECT_EQ(SIGPIPE, talking.signal);
    EXPECT_EQ(Names{}, leftTemporary());
}

TEST_F(SignalsTest, ClosedPipeIsAFailureIfTheSignalIsIgnored) {
    const Ended ended = hw({}, "copies").unread(1).ignoring(SIGPIPE).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("zav: cannot write to standard output: Broken pipe\n", ended.err);
    EXPECT_EQ(Names{}, leftTemporary());
}

TEST_F(SignalsTest, IgnoredSignalsStayIgnored) {
    const Ended ended = whenScanning(hw({"-vv"}).ignoring(SIGHUP).ignoring(SIGQUIT), [](int pid) {
        kill(pid, SIGHUP);
        kill(pid, SIGQUIT);
        kill(pid, SIGTERM);
    });
    EXPECT_EQ(SIGTERM, ended.signal);
}

TEST_F(SignalsTest, ScannerStatusIsKnownIfChildSignalsAreIgnored) {
    const Ended ended = hw({}, "fails").ignoring(SIGCHLD).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_NE(std::string::npos, ended.err.find("failed with status 3")) << ended.err;
    const std::string bad = scratch_.write("bad.xml", "<Signatures><Bad/></Signatures>").string();
    EXPECT_EQ(
        1, Process({"sw", "--check", "--toolkit", scanner("answers"), bad}).ignoring(SIGCHLD).run().status);
}

TEST_F(SignalsTest, NextRunRemovesFilesOfAKilledCommand) {
    Names left;
    whenScanning(hw({"-vv"}), [&](int pid) {
        left = leftTemporary();
        kill(-pid, SIGKILL);
    });
    ASSERT_EQ(1U, left.size());
    EXPECT_EQ(left, leftTemporary());
    EXPECT_EQ(0, hw({}, "copies").run().status);
    EXPECT_EQ(Names{}, leftTemporary());
}

TEST_F(SignalsTest, FilesOfARunningCommandAreKept) {
    Names whileRunning;
    const Ended ended = whenScanning(hw({"-vv"}), [&](int pid) {
        EXPECT_EQ(0, hw({}, "copies").run().status);
        whileRunning = leftTemporary();
        kill(pid, SIGTERM);
    });
    EXPECT_EQ(1U, whileRunning.size());
    EXPECT_EQ(SIGTERM, ended.signal);
    EXPECT_EQ(Names{}, leftTemporary());
}

}  // namespace
}  // namespace zavtest
