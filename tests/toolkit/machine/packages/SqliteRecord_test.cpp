#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "toolkit/machine/packages/SqliteFile.h"

namespace toolkit {
namespace {

using Kind = SqliteValue::Kind;

// The bytes of a literal, with its zeros.
template <std::size_t kSize>
std::string bytesOf(const char (&literal)[kSize]) {
    return {literal, kSize - 1};
}

TEST(SqliteRecord, OnlyIntegersHaveANumber) {
    const std::string record = bytesOf("\x07\x00\x07\x08\x09\x0e\x0f") + std::string(8, '\x40') + "bt";
    const Kind kinds[] = {Kind::Null, Kind::Real, Kind::Integer, Kind::Integer, Kind::Blob, Kind::Text};
    const std::string_view bytes[] = {"", "", "", "", "b", "t"};
    for (unsigned i = 0; i < 6; ++i) {
        const SqliteValue value = sqliteColumn(record, i);
        EXPECT_EQ(kinds[i], value.kind) << i;
        EXPECT_EQ(i == 3 ? 1 : 0, value.number) << i;
        EXPECT_EQ(bytes[i], value.bytes) << i;
    }
    EXPECT_EQ(Kind::Missing, sqliteColumn(record, 6).kind);
}

TEST(SqliteRecord, NothingIsReadBehindAReservedType) {
    for (const char* const types : {"\x0a\x09", "\x0b\x09"}) {
        const std::string record = std::string("\x03") + types;
        EXPECT_EQ(Kind::Missing, sqliteColumn(record, 0).kind) << int{types[0]};
        EXPECT_EQ(Kind::Missing, sqliteColumn(record, 1).kind) << int{types[0]};
    }
}

TEST(SqliteRecord, TheNinthByteOfANumberHasEightBits) {
    // Types of 0x81 and 0x183: texts of 58 and 187 bytes.
    const std::string eight(8, '\x80');
    const std::string record = bytesOf("\x14") + eight + '\x81' + eight.substr(1) + "\x81\x83\x09" +
                               std::string(58, 'a') + std::string(187, 'b');
    EXPECT_EQ(std::string(58, 'a'), sqliteColumn(record, 0).bytes);
    EXPECT_EQ(std::string(187, 'b'), sqliteColumn(record, 1).bytes);
    EXPECT_EQ(1, sqliteColumn(record, 2).number) << "the number ends with its ninth byte";
}

TEST(SqliteRecord, ValuesMustBeWhole) {
    EXPECT_EQ(5, sqliteColumn(bytesOf("\x02\x01\x05"), 0).number);
    EXPECT_EQ(Kind::Integer, sqliteColumn(bytesOf("\x02\x01\x05"), 0).kind);
    EXPECT_EQ(Kind::Missing, sqliteColumn(bytesOf("\x02\x01"), 0).kind);
    EXPECT_EQ(Kind::Missing, sqliteColumn(bytesOf("\x02\x02\x05"), 0).kind);
    EXPECT_EQ(Kind::Missing, sqliteColumn(bytesOf("\x03\x02\x01\x05"), 1).kind)
        << "behind a value that is cut";
}

TEST(SqliteRecord, TypesEndWithTheHeader) {
    EXPECT_EQ(Kind::Null, sqliteColumn(bytesOf("\x02\x00"), 0).kind);
    EXPECT_EQ(Kind::Missing, sqliteColumn(bytesOf("\x02\x00"), 1).kind);
    EXPECT_EQ(Kind::Missing, sqliteColumn(bytesOf("\x03\x00"), 0).kind) << "the header is cut";
    EXPECT_EQ(Kind::Missing, sqliteColumn(bytesOf("\x03\x00\x80"), 1).kind) << "a type is cut";
    EXPECT_EQ(Kind::Missing, sqliteColumn(bytesOf("\x00\x00"), 0).kind) << "the size of the header is wrong";
    EXPECT_EQ(Kind::Missing, sqliteColumn(bytesOf("\x80\x01\x00"), 0).kind) << "the header is its size only";
    EXPECT_EQ(Kind::Missing, sqliteColumn(bytesOf("\x80"), 0).kind);
    EXPECT_EQ(Kind::Missing, sqliteColumn("", 0).kind);
}

}  // namespace
}  // namespace toolkit
