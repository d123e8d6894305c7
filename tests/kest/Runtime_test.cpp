#include "kest/Runtime.h"

#include <gtest/gtest.h>

#include <csignal>

#include "kest/Text.h"
#include "tests/kest/Children.h"

namespace kest::test {
namespace {

using namespace std::string_literals;

// Fails if a test leaves a child or a descriptor behind.
class RuntimeTest : public testing::Test {
    NothingLeft nothingLeft_;
};

TEST_F(RuntimeTest, ReturnsTheExitStatus) {
    for (const int status : {0, 1, 7, 127, 255}) {
        EXPECT_EQ(run(child("ExitWith") + " " + std::to_string(status)), (Outcome{"", status}));
    }
}

TEST_F(RuntimeTest, ReturnsTheSignalThatEndedTheChild) {
    for (const int signal : {SIGKILL, SIGTERM, SIGSEGV}) {
        EXPECT_EQ(run(child("EndBySignal") + " " + std::to_string(signal)), (Outcome{"", 128 + signal}));
    }
}

TEST_F(RuntimeTest, PassesTheArgumentsOfTheCommandLine) {
    EXPECT_EQ(run(child("ShowArguments") + " -c \"/tmp/a b\"\t\"\" x\"y\"").output,
              "[-c]\n[/tmp/a b]\n[]\n[xy]\n");
}

TEST_F(RuntimeTest, UsesNoShell) {
    EXPECT_EQ(run(child("ShowArguments") + " ;exit $(echo) `echo` $HOME * ~ 'a | >&1 \\").output,
              "[;exit]\n[$(echo)]\n[`echo`]\n[$HOME]\n[*]\n[~]\n['a]\n[|]\n[>&1]\n[\\]\n");
}

TEST_F(RuntimeTest, NarrowsTheCommandToItsLowBytes) {
    const String command(widen(child("ShowArguments")) + L" \x20AC \xE4");
    const std::unique_ptr<ChildProcess> process(Runtime().launch(command, "\0\0"));
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(readAll(*process->getOutputStream()), "[\xAC]\n[\xE4]\n");
}

TEST_F(RuntimeTest, GivesTheChildTheEnvironmentBlockAndNothingElse) {
    EXPECT_EQ(run(child("ShowEnvironment"), environmentBlock({"A=1", "B=x y"})).output, "A=1\nB=x y\n");
    EXPECT_EQ(run(child("ShowEnvironment"), "A=1\0\0B=2\0\0\0\0"s).output, "A=1\nB=2\n");
    EXPECT_EQ(run(child("ShowEnvironment"), environmentBlock({})).output, "");
}

TEST_F(RuntimeTest, WithoutAnEnvironmentBlockTheEnvironmentIsEmpty) {
    const std::unique_ptr<ChildProcess> process(
        Runtime().launch(String(widen(child("ShowEnvironment"))), nullptr));
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(readAll(*process->getOutputStream()), "");
}

TEST_F(RuntimeTest, RunsAScriptThatNamesItsInterpreter) {
    const zavtest::ScratchDir directory;
    EXPECT_EQ(run(makeFile(directory, "script", "#!/bin/sh\necho done\nexit 3\n", 0755)),
              (Outcome{"done\n", 3}));
}

TEST_F(RuntimeTest, DoesNotStartAFileThatIsNotAProgram) {
    const zavtest::ScratchDir directory;
    const std::string commands[] = {
        "",
        " \t ",
        "\"\"",
        directory.path() / "missing",
        directory.path() / "",
        makeFile(directory, "not-executable", "#!/bin/sh\n", 0644),
        makeFile(directory, "no-program", "echo no program\n", 0755),
        makeFile(directory, "empty", "", 0755),
        makeFile(directory, "no-interpreter", "#!/nonexistent/interpreter\n", 0755),
        directory.path() / "empty/below-a-file",
        "/" + std::string(5000, 'x'),
    };
    for (const std::string& command : commands) {
        EXPECT_EQ(launch(command), nullptr) << "command: " << command;
    }
}

TEST_F(RuntimeTest, DoesNotSearchForThePathOfAProgram) {
    EXPECT_EQ(launch("true", "PATH=/bin:/usr/bin\0\0\0"s), nullptr);
}

TEST_F(RuntimeTest, RefusesAnArgumentThatWouldBeTruncated) {
    EXPECT_EQ(launch(child("ShowArguments") + " a\0b"s), nullptr);
}

TEST_F(RuntimeTest, PassesAListOfArgumentsUnchanged) {
    const std::string quoted = child("ShowArguments");
    const std::string program = quoted.substr(1, quoted.size() - 2);
    const LaunchResult launched =
        Runtime().launch({program, "", " a  b\t", "\"", "-o", "x\" -o \"y"}, nullptr);
    ASSERT_NE(launched.child, nullptr);
    EXPECT_EQ(launched.failure, "");
    EXPECT_EQ(readAll(*launched.child->getOutputStream()), "[]\n[ a  b\t]\n[\"]\n[-o]\n[x\" -o \"y]\n");
}

TEST_F(RuntimeTest, ReportsWhyAProgramWasNotStarted) {
    const zavtest::ScratchDir directory;
    const struct {
        std::vector<std::string> arguments;
        const char* failure;
    } cases[] = {
        {{}, "no program is named"},
        {{directory.path() / "missing"}, "ENOENT (no such file or directory)"},
        {{directory.path()}, "EACCES (permission denied)"},
        {{"/bin/true", "a\0b"s}, "its argument 1 holds a NUL"},
        {{"/bin/true\0"s}, "its path holds a NUL"},
        {{"/bin/true", std::string(200'000, 'x')}, "E2BIG (argument list too long)"},
    };
    for (const auto& each : cases) {
        const LaunchResult launched = Runtime().launch(each.arguments, nullptr);
        EXPECT_EQ(launched.child, nullptr) << each.failure;
        EXPECT_EQ(launched.failure, each.failure);
    }
}

TEST_F(RuntimeTest, DoesNotStartAProgramWithTooManyArguments) {
    EXPECT_EQ(launch(child("ShowArguments") + " " + std::string(200'000, 'x')), nullptr);
}

TEST_F(RuntimeTest, StartsAgainAfterAFailure) {
    EXPECT_EQ(launch("/nonexistent"), nullptr);
    EXPECT_EQ(run(child("ExitWith") + " 0").status, 0);
}

TEST_F(RuntimeTest, BothWaitingOperationsMayBeRepeatedInAnyOrder) {
    const std::unique_ptr<ChildProcess> process = launch(child("ExitWith") + " 7");
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(process->exitValue(), 7);
    EXPECT_EQ(process->waitFor(), 7);
    EXPECT_EQ(process->waitFor(), 7);
    EXPECT_EQ(process->exitValue(), 7);
}

TEST_F(RuntimeTest, BothWaitingOperationsWaitForTheEnd) {
    const std::unique_ptr<ChildProcess> first = launch(child("CloseOutputThenExit"));
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(readAll(*first->getOutputStream()), "");
    EXPECT_EQ(first->waitFor(), 7);
    const std::unique_ptr<ChildProcess> second = launch(child("CloseOutputThenExit"));
    ASSERT_NE(second, nullptr);
    EXPECT_EQ(readAll(*second->getOutputStream()), "");
    EXPECT_EQ(second->exitValue(), 7);
}

TEST_F(RuntimeTest, ChildrenOfOneRuntimeRunSideBySide) {
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    Runtime runtime;
    const String command(widen(child("WriteLineThenWait") + " " + pipe));
    const std::unique_ptr<ChildProcess> waiting(runtime.launch(command, nullptr));
    ASSERT_NE(waiting, nullptr);
    EXPECT_EQ(readLine(*waiting->getOutputStream()), "first");
    EXPECT_EQ(run(child("ExitWith") + " 3").status, 3);
    openForWriting(pipe);
    EXPECT_EQ(readAll(*waiting->getOutputStream()), "second\n");
    EXPECT_EQ(waiting->waitFor(), 7);
}

TEST_F(RuntimeTest, AChildThatStillWritesDoesNotDelayItsDestruction) {
    const std::unique_ptr<ChildProcess> process = launch(child("WriteForever"));
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(process->getOutputStream()->read(), 'm');
}

TEST_F(RuntimeTest, AnUnreadAndUnawaitedChildLeavesNothing) {
    EXPECT_NE(launch(child("WriteLines") + " 10"), nullptr);
    EXPECT_NE(launch(child("ExitWith") + " 7"), nullptr);
}

}  // namespace
}  // namespace kest::test
