#include "kest/Text.h"

#include <gtest/gtest.h>

namespace kest {
namespace {

TEST(Text, NarrowKeepsTheLowEightBits) {
    EXPECT_EQ(narrow(L""), "");
    EXPECT_EQ(narrow(L"/opt/kit"), "/opt/kit");
    EXPECT_EQ(narrow(L"\xE4"), "\xE4");
    EXPECT_EQ(narrow(L"\x20AC!"), "\xAC!");
    EXPECT_EQ(narrow(std::wstring(1, L'\x100')), std::string(1, '\0'));
}

TEST(Text, WidenTakesBytesAsSigned) {
    EXPECT_EQ(widen(""), L"");
    EXPECT_EQ(widen("abc"), L"abc");
    EXPECT_EQ(widen("\x7F")[0], L'\x7F');
    EXPECT_EQ(widen("\x80")[0], static_cast<wchar_t>(-128));
    EXPECT_EQ(widen("\xFF")[0], static_cast<wchar_t>(-1));
}

TEST(Text, EveryByteComesBackAsItWent) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
    EXPECT_EQ(narrow(widen(all)), all);
}

}  // namespace
}  // namespace kest
