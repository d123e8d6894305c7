#include "kest/Escape.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace kest {
namespace {

TEST(Escape, EveryByteThatIsNotPrintableAsciiIsSpeltOut) {
    EXPECT_EQ(escaped("/tmp/a b~.xml"), "/tmp/a b~.xml");
    EXPECT_EQ(escaped("caf\xC3\xA9"), "caf\\xC3\\xA9");
    EXPECT_EQ(escaped(std::string_view("\0\n\x1B\x7F\xFF", 5)), "\\x00\\x0A\\x1B\\x7F\\xFF");
    EXPECT_EQ(escaped("a\\x41"), "a\\\\x41");
    EXPECT_EQ(escaped(""), "");
}

TEST(Escape, LongNamesAreTruncatedInsideTheQuotationMarks) {
    EXPECT_EQ(kest::quoted("a\xC3"), "\"a\\xC3\"");
    EXPECT_EQ(kest::quoted(std::string(200, 'x')), '"' + std::string(200, 'x') + '"');
    EXPECT_EQ(kest::quoted(std::string(201, 'x')), '"' + std::string(200, 'x') + "...\"");
}

}  // namespace
}  // namespace kest
