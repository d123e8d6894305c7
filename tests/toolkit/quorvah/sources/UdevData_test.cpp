#include "toolkit/quorvah/sources/UdevData.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(UdevData, PropertiesAreFoundByTheirCompleteName) {
    constexpr char kText[] =
        "S:disk/by-id/x\nE:ID_FS_UUID_ENC=enc\nE:ID_FS_UUID=1=2\nG:ID_FS_LABEL=no\nE:ID_FS_TYPE=ext4";
    EXPECT_EQ("1=2", udevProperty(kText, "ID_FS_UUID"));
    EXPECT_EQ("enc", udevProperty(kText, "ID_FS_UUID_ENC"));
    EXPECT_EQ("ext4", udevProperty(kText, "ID_FS_TYPE"));
    EXPECT_EQ("", udevProperty(kText, "ID_FS_LABEL"));
    EXPECT_EQ("", udevProperty(kText, ""));
    EXPECT_EQ("", udevProperty("", "ID_FS_UUID"));
}

TEST(UdevData, OnlyCompleteHexEscapesAreDecoded) {
    EXPECT_EQ("a b", withoutHexEscapes("a\\x20b"));
    EXPECT_EQ("\xc3\xa4", withoutHexEscapes("\\xc3\\xa4"));
    for (const char* const text : {"", "\\", "\\x", "\\x2", "\\xg0", "\\x2g", "x20"}) {
        EXPECT_EQ(text, withoutHexEscapes(text));
    }
}

}  // namespace
}  // namespace toolkit::quorvah
