#include "kest/OutputStream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/kest/Children.h"

namespace kest::test {
namespace {

std::string lines(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += "line " + std::to_string(i) + "\n";
    return text;
}

TEST(OutputStream, DeliversEveryByteUnchanged) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
    EXPECT_EQ(run(child("WriteBytes")), (Outcome{all, 0}));
}

TEST(OutputStream, DeliversManyLinesByteByByte) {
    EXPECT_EQ(run(child("WriteLines") + " 100000"), (Outcome{lines(100'000), 0}));
}

TEST(OutputStream, DeliversManyLinesBlockByBlock) {
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLines") + " 100000");
    ASSERT_NE(process, nullptr);
    std::string all;
    for (std::string_view some; !(some = process->getOutputStream()->readSome()).empty();) all += some;
    EXPECT_EQ(all, lines(100'000));
    EXPECT_EQ(process->waitFor(), 0);
}

// The child continues only after the test has received its line. If the line were held back, both would hang.
TEST(OutputStream, DeliversALineWhileTheChildStillRuns) {
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(process, nullptr);
    OutputStream& output = *process->getOutputStream();
    EXPECT_EQ(readLine(output), "first");
    openForWriting(pipe);
    EXPECT_EQ(readLine(output), "second");
    EXPECT_EQ(output.read(), -1);
    EXPECT_EQ(process->waitFor(), 7);
}

TEST(OutputStream, ReadSomeDoesNotWaitForMoreThanHasArrived) {
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(process->getOutputStream()->readSome(), "first\n");
    openForWriting(pipe);
    EXPECT_EQ(process->getOutputStream()->readSome(), "second\n");
    EXPECT_EQ(process->getOutputStream()->readSome(), "");
}

TEST(OutputStream, IsTheSameOneEachTime) {
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLines") + " 1");
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(process->getOutputStream()->read(), 'l');
    EXPECT_EQ(readAll(*process->getOutputStream()), "ine 0\n");
}

TEST(OutputStream, StaysAtItsEndAfterTheChildHasBeenWaitedFor) {
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLines") + " 1");
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(process->waitFor(), 0);
    EXPECT_EQ(readAll(*process->getOutputStream()), "line 0\n");
    EXPECT_EQ(process->getOutputStream()->read(), -1);
    EXPECT_EQ(process->getOutputStream()->readSome(), "");
}

// The grandchild waits for the test, so the stream must not wait for the grandchild.
TEST(OutputStream, EndsWithTheChildThoughAnotherProcessHasItOpen) {
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    for (const int bytes : {0, 1, 60'000, 1'000'000}) {
        const Outcome outcome = run(child("LeaveGrandchild") + " " + std::to_string(bytes) + " " + pipe);
        EXPECT_EQ(outcome, (Outcome{std::string(static_cast<std::size_t>(bytes), 'x'), 7}));
        openForWriting(pipe);
    }
}

TEST(OutputStream, EndsWithTheChildThoughAnotherProcessGoesOnWriting) {
    for (const int bytes : {0, 1, 60'000, 1'000'000}) {
        const Outcome outcome = run(child("LeaveGrandchild") + " " + std::to_string(bytes));
        EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), 'x'), bytes);
        EXPECT_EQ(outcome.status, 7);
    }
}

TEST(OutputStream, AChildThatLeftAnotherProcessDoesNotHoldUpItsDestruction) {
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    EXPECT_NE(launch(child("LeaveGrandchild") + " 10 " + pipe), nullptr);
    openForWriting(pipe);
}

}  // namespace
}  // namespace kest::test
