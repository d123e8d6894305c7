#include "intake/ConfigFrame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tests/tessa/Reading.h"

namespace zav::test {
namespace {

TEST(ConfigFrame, StandsAroundTheSectionByteForByte) {
    ASSERT_EQ(kConfigFrameHead.size(), 4U);
    EXPECT_STREQ(kConfigFrameHead[0], "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n");
    EXPECT_STREQ(kConfigFrameHead[2],
                 "<QEL xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
                 "xsi:noNamespaceSchemaLocation=\"zavcli.xsd\">\n");
    EXPECT_STREQ(kConfigFrameHead[3], "    <ZAV>\n");
    ASSERT_EQ(kConfigFrameTail.size(), 2U);
    EXPECT_STREQ(kConfigFrameTail[0], "    </ZAV>\n");
    EXPECT_STREQ(kConfigFrameTail[1], "</QEL>\n");
}

TEST(ConfigFrame, NoticeIsOneCommentOfSixLines) {
    const std::string notice = kConfigFrameHead[1];
    EXPECT_EQ(std::count(notice.begin(), notice.end(), '\n'), 6);
    EXPECT_TRUE(notice.starts_with("<!-- "));
    EXPECT_TRUE(notice.ends_with(" -->\n"));
    EXPECT_EQ(notice.find("--", 4), notice.size() - 4) << "no hyphens that would end the comment";
    EXPECT_NE(notice.find("Licensed under the Apache License, Version 2.0"), std::string::npos);
    EXPECT_NE(notice.find("\"as is\" basis"), std::string::npos);
    EXPECT_TRUE(std::all_of(notice.begin(), notice.end(),
                            [](char byte) { return byte == '\n' || (byte >= ' ' && byte <= '~'); }));
}

TEST(ConfigFrame, IsAWellFormedDocument) {
    std::string text;
    for (const char* const part : kConfigFrameHead) text += part;
    for (const char* const part : kConfigFrameTail) text += part;
    EXPECT_EQ(tessa::test::treeOf(text),
              L"QEL[xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance']"
              L"[xsi:noNamespaceSchemaLocation='zavcli.xsd'](ZAV)");
}

}  // namespace
}  // namespace zav::test
