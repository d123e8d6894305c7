#include "toolkit/quorvis/evaluation/ScanMessage.h"

#include <gtest/gtest.h>

namespace toolkit::quorvis {
namespace {

using Kind = ScanMessage::Kind;
using Next = ScanMessageReader::Next;

TEST(ScanMessage, IsReadFromBlocksOfAnySize) {
    const std::string bytes = encoded({Kind::Signatures, 70'000, {}}) +
                              encoded(messageOf({EventCode::Deadline, "/a", "text", "guid", "leaf"})) +
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
        EXPECT_EQ("/a text guid leaf", event.path + " " + event.text + " " + event.guid + " " + event.leaf);
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

}  // namespace
}  // namespace toolkit::quorvis
