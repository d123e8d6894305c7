#include "toolkit/quorvah/report/GroupResult.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

constexpr schema::Field kFields[] = {{"DeviceID"}, {"Value"}};
constexpr Group kQuick{"Quick", "Quick", kFields, nullptr};

using std::chrono::milliseconds;

TEST(GroupResult, SurvivesAFrame) {
    const GroupResult sent{&kQuick,
                           {},
                           "<Quick/>",
                           {},
                           1,
                           "permission",
                           {"beware", ""},
                           milliseconds(1234),
                           GroupState::Partial};
    SharedBuffer texts;
    ASSERT_TRUE(texts.append("something before it"));
    const auto place = texts.append(sent.xml);
    ASSERT_TRUE(place);
    const std::string frame = toFrame(sent, *place);
    EXPECT_EQ(frameLength(frame), frame.size());
    EXPECT_EQ(frameLength(frame + "next"), frame.size());
    GroupResult received;
    received.group = &kQuick;
    ASSERT_TRUE(readFrame(frame, texts, received));
    EXPECT_EQ(received.group, &kQuick);
    EXPECT_EQ(received.xml, sent.xml);
    EXPECT_EQ(received.instances, 1U);
    EXPECT_EQ(received.state, GroupState::Partial);
    EXPECT_EQ(received.reason, "permission");
    EXPECT_EQ(received.warnings, sent.warnings);
    EXPECT_EQ(received.elapsed, milliseconds(1234));
}

TEST(GroupResult, IsNotReadFromIncompleteFrames) {
    const GroupResult sent{&kQuick, {}, "<Quick/>", {}, 1, "", {"beware"}, milliseconds(1)};
    SharedBuffer texts;
    const std::string frame = toFrame(sent, texts.append(sent.xml).value_or(1));
    for (std::size_t length = 0; length < frame.size(); ++length) {
        std::string cut = frame.substr(0, length);
        GroupResult received;
        EXPECT_FALSE(readFrame(cut, texts, received)) << length;
        if (cut.empty()) continue;
        cut[0] = static_cast<char>(length);
        GroupResult again;
        EXPECT_FALSE(readFrame(cut, texts, again)) << length;
    }
    EXPECT_EQ(frameLength("abc"), 0U);
}

}  // namespace
}  // namespace toolkit::quorvah
