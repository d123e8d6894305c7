#include "toolkit/machine/text/ShellVariables.h"

#include <gtest/gtest.h>

namespace toolkit {
namespace {

TEST(ShellVariables, ResolvesQuotesAndBackslashes) {
    const std::pair<const char*, const char*> cases[] = {
        {"X=plain", "plain"},
        {"X=\"two words\"", "two words"},
        {"X='it is \"so\"'", "it is \"so\""},
        {"X=\"a\\\"b\\\\c\\$d\\`e\"", "a\"b\\c$d`e"},
        {"X=\"keep \\n\"", "keep \\n"},
        {"X='keep \\\\'", "keep \\\\"},
        {"X=Debian\\ GNU", "Debian GNU"},
        {"X=one two", "one"},
        {"X=7 # seven", "7"},
        {"X=a\"b\"'c'", "abc"},
        {"X=", ""},
        {"X=\"unfinished", "unfinished"},
        {"  X=indented", "indented"},
        {"export X=exported", "exported"},
        {"X=first\nX=last", "last"},
        {"X=dos\r\nY=1", "dos"},
        {"#X=comment", ""},
        {"X =no", ""},
        {"XY=other", ""},
        {"", ""},
    };
    for (const auto& [text, value] : cases) EXPECT_EQ(ShellVariables(text).value("X"), value) << text;
}

}  // namespace
}  // namespace toolkit
