#include "toolkit/machine/text/KeyFile.h"

#include <gtest/gtest.h>

#include <string>

namespace toolkit {
namespace {

TEST(KeyFile, AValueIsFoundInItsGroupOnly) {
    constexpr char kText[] =
        "# comment\nname=none\n[Runtime]\nname=wrong\n\n[Application]\r\n name = org.x.Y "
        "\r\nname=second\n[Other";
    EXPECT_EQ("org.x.Y", keyFileValue(kText, "Application", "name"));
    EXPECT_EQ("wrong", keyFileValue(kText, "Runtime", "name"));
    EXPECT_EQ("", keyFileValue(kText, "Other", "name"));
    EXPECT_EQ("", keyFileValue(kText, "Application", "nam"));
    EXPECT_EQ("", keyFileValue(kText, "", "name"));
    EXPECT_EQ("", keyFileValue("", "Application", "name"));
}

}  // namespace
}  // namespace toolkit
