#include "kest/Format.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>
#include <string>

namespace kest {
namespace {

std::wstring taken(wchar_t* text) {
    if (text == nullptr) return L"(null)";
    std::wstring copy = text;
    std::free(text);
    return copy;
}

TEST(Format, CarriesOutTheFormat) {
    EXPECT_EQ(taken(i_wsprintf("plain")), L"plain");
    EXPECT_EQ(taken(i_wsprintf("%s", "")), L"");
    EXPECT_EQ(taken(i_wsprintf("_%d", 30)), L"_30");
    EXPECT_EQ(taken(i_wsprintf("%s/%05.1f%%", "a", 2.25)), L"a/002.2%");
}

TEST(Format, IsAsLongAsNeeded) {
    const std::string text(100'000, 'x');
    EXPECT_EQ(taken(i_wsprintf("%s", text.c_str())), std::wstring(text.begin(), text.end()));
}

TEST(Format, WidensBytesAsSigned) {
    EXPECT_EQ(taken(i_wsprintf("\xE4"))[0], static_cast<wchar_t>(-28));
}

TEST(Format, IsNullWhenTheFormatCannotBeCarriedOut) {
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    const wchar_t unconvertible[] = {static_cast<wchar_t>(0x20AC), 0};
    EXPECT_EQ(i_wsprintf("%ls", unconvertible), nullptr);
}

}  // namespace
}  // namespace kest
