#include "toolkit/quorvis/evaluation/ScanMessage.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstring>
#include <utility>

#include "toolkit/machine/sandbox/WorkerProcess.h"

namespace toolkit::quorvis {
namespace {

using Kind = ScanMessage::Kind;
using Next = ScanMessageReader::Next;

TEST(ScanMessage, IsReadFromBlocksOfAnySize) {
    const std::string bytes =
        encoded({Kind::Signatures, 70'000, {}}) +
        encoded(messageOf({EventCode::Deadline, "/a", "text", "guid", "leaf", true, 70'000, "io"})) +
        encoded({Kind::Done, 0, {}});
    for (std::size_t size = 1; size <= bytes.size(); ++size) {
        ScanMessageReader reader;
        std::vector<ScanMessage> messages;
        for (std::size_t at = 0; at < bytes.size(); at += size) {
            reader.add(std::string_view(bytes).substr(at, size));
            for (ScanMessage message; reader.next(message) == Next::Message;) messages.push_back(message);
        }
        ASSERT_EQ(3U, messages.size()) << size;
        EXPECT_EQ(70'000U, messages[0].number);
        const Event event = eventOf(messages[1]);
        EXPECT_EQ(EventCode::Deadline, event.code);
        EXPECT_TRUE(event.ofFile);
        EXPECT_EQ(70'000U, event.count);
        EXPECT_EQ("/a text guid leaf io",
                  event.path + " " + event.text + " " + event.guid + " " + event.leaf + " " + event.because);
        EXPECT_EQ(Kind::Done, messages[2].kind);
    }
}

TEST(ScanMessage, InvalidBytesAreBroken) {
    const auto with = [](std::string bytes, std::size_t at, char value) {
        bytes[at] = value;
        return bytes;
    };
    const std::string done = encoded({Kind::Done, 0, {}});
    const std::string match = encoded({Kind::Match, 0, {"<x/>"}});
    const std::string event = encoded(messageOf({}));
    const std::string wrong[] = {
        with(done, 8, 99),                // an unknown kind
        with(match, 24, 5),               // a text that is longer than the message
        with(event, 16, 99),              // an unknown code
        encoded({Kind::Match, 0, {}}),    // a text is missing
        encoded({Kind::Done, 0, {"x"}}),  // a text too many
        std::string(8, '\xFF'),           // an excessive length
    };
    for (const std::string& bytes : wrong) {
        ScanMessageReader reader;
        reader.add(bytes);
        ScanMessage message;
        EXPECT_EQ(Next::Broken, reader.next(message)) << testing::PrintToString(bytes);
    }
}

// Puts bytes into the output and writes some of them to the pipe, with or without counting them as sent.
void leaveBehind(int pipe, WorkerOutput& output, std::size_t sent, bool counted) {
    std::memcpy(output.bytes.data(), "abcdef", 6);
    output.used = 6;
    if (::write(pipe, output.bytes.data(), sent) != static_cast<ssize_t>(sent)) ::_exit(8);
    if (!counted) return;
    output.used = 0;
    output.sent = sent;
}

TEST(WorkerOutput, EachByteArrivesOnceWheneverTheWorkerDies) {
    const std::pair<std::size_t, bool> cases[] = {{0, false}, {3, false}, {6, false}, {6, true}};
    for (const auto& [sent, counted] : cases) {
        const auto output = makeSharedOutput();
        WorkerProcess worker([&, sent = sent, counted = counted](int pipe) {
            leaveBehind(pipe, *output, sent, counted);
            ::_exit(7);
        });
        EXPECT_EQ("it ended with status 7", worker.join());
        const std::string drained = worker.drain();
        EXPECT_EQ("abcdef", drained + bytesLeftIn(*output, worker.received())) << sent << counted;
    }
}

TEST(WorkerOutput, MessagesOfAHangingWorkerAreKept) {
    const auto output = makeSharedOutput();
    WorkerProcess worker([&](int) {
        std::memcpy(output->bytes.data(), "told", 4);
        output->used = 4;
        output->deadline.set(SharedDeadline::Clock::now());
        for (;;) ::pause();
    });
    while (!output->deadline.isLateBy(std::chrono::milliseconds(1))) {
    }
    worker.kill();
    EXPECT_EQ("told", worker.drain() + bytesLeftIn(*output, worker.received()));
}

}  // namespace
}  // namespace toolkit::quorvis
