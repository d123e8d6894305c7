#include "toolkit/quorvah/sources/Edid.h"

#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/EdidBlock.h"

namespace toolkit::quorvah {
namespace {

TEST(Edid, ReadsADigitalDisplay) {
    const std::optional<Edid> edid = readEdid(edidBlock());
    ASSERT_TRUE(edid);
    EXPECT_EQ("DEL", edid->maker);
    EXPECT_EQ("a0c4", edid->product);
    EXPECT_EQ("DELL U2412M", edid->name);
    EXPECT_EQ("YMYH12AB", edid->serialNumber);
    EXPECT_EQ(23U, edid->week);
    EXPECT_EQ(2012U, edid->year);
    EXPECT_EQ("1.4", edid->version);
    EXPECT_TRUE(edid->digital);
    EXPECT_EQ(518U, edid->width);
    EXPECT_EQ(324U, edid->height);
    EXPECT_EQ(611U, edid->diagonal);
    EXPECT_EQ(1920U, edid->horizontalPixels);
    EXPECT_EQ(1200U, edid->verticalPixels);
}

TEST(Edid, AWrongChecksumOrALengthBelowABlockIsNoEdid) {
    std::string block = edidBlock();
    for (std::size_t length = 0; length < block.size(); ++length)
        EXPECT_FALSE(readEdid(block.substr(0, length)));
    block[20] = static_cast<char>(block[20] ^ 1);
    EXPECT_FALSE(readEdid(block));
    EXPECT_FALSE(readEdid(std::string(128, '\0')));
}

TEST(Edid, UsesTheNumberIfThereIsNoSerialText) {
    std::string block = edidBlock();
    block.replace(72, 18, 18, '\0');
    EXPECT_EQ("305419896", readEdid(withChecksum(block))->serialNumber);
    block.replace(12, 4, 4, '\x01');
    EXPECT_EQ("", readEdid(withChecksum(block))->serialNumber);
}

TEST(Edid, TheYearOfAModelHasNoWeek) {
    std::string block = edidBlock();
    block[16] = '\xff';
    EXPECT_EQ(0U, readEdid(withChecksum(block))->week);
    EXPECT_EQ(2012U, readEdid(withChecksum(block))->year);
}

TEST(Edid, AnAspectRatioInPlaceOfASizeIsNotUsed) {
    std::string block = edidBlock();
    block[54 + 12] = 16;
    block[54 + 13] = 9;
    block[54 + 14] = 0;
    EXPECT_EQ(520U, readEdid(withChecksum(block))->width) << "from the size in centimetres";
    block[21] = 0;
    EXPECT_EQ(0U, readEdid(withChecksum(block))->width);
    EXPECT_EQ(0U, readEdid(withChecksum(block))->diagonal);
}

TEST(Edid, AMakerThatIsNotOfLettersIsUnknown) {
    std::string block = edidBlock();
    block[8] = 0;
    block[9] = 0;
    EXPECT_EQ("", readEdid(withChecksum(block))->maker);
}

TEST(Edid, ExtensionsMayBeMissingOrOfAnyContent) {
    std::string block = edidBlock();
    block[126] = 2;
    block = withChecksum(block);
    std::string displayId(128, '\xff');
    displayId[0] = '\x70';
    for (const std::string& extensions : {std::string(), displayId, displayId.substr(0, 60)}) {
        const std::optional<Edid> edid = readEdid(block + extensions);
        ASSERT_TRUE(edid) << extensions.size();
        EXPECT_EQ("DELL U2412M", edid->name);
        EXPECT_EQ(1920U, edid->horizontalPixels);
    }
}

TEST(Edid, ADisplayMayHaveNoNameAndASerialNumberAsTextOnly) {
    std::string block = edidBlock();
    block.replace(12, 4, 4, '\0');
    block.replace(90, 18, 18, '\0');
    const std::optional<Edid> edid = readEdid(withChecksum(block));
    ASSERT_TRUE(edid);
    EXPECT_EQ("", edid->name);
    EXPECT_EQ("YMYH12AB", edid->serialNumber);
    EXPECT_EQ("DEL", edid->maker);
}

}  // namespace
}  // namespace toolkit::quorvah
