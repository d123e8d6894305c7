#include "cli/Warnings.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

TEST(Warnings, AreToldInWords) {
    const struct {
        const char* xml;
        const char* text;
    } cases[] = {
        {R"(<Event code="permission" severity="warning" guid="G" leaf="f" path="/etc/x" count="1">cannot be read</Event>)",
         "warning: /etc/x: cannot be read (signature G, leaf f)"},
        {R"(<Event code="permission" count="17" guid="G">more such events</Event>)",
         "warning: more such events (signature G, 17 times)"},
        {R"(<Event code="loop" severity="info" path="/a">a loop</Event>)", "note: /a: a loop"},
        {R"(<Event path="/a">/a is too large</Event>)", "warning: /a is too large"},
        {R"(<Event code="io" path="/gr&#246;&#223;"/>)", "warning: /gr\xc3\xb6\xc3\x9f: io"},
        {R"(<Event>plain &lt;words&gt;</Event>)", "warning: plain <words>"},
        {"<Event><Odd/></Event>", "warning: <Event><Odd/></Event>"},
        {"no XML", "warning: no XML"},
    };
    for (const auto& [xml, text] : cases) EXPECT_EQ(text, warningText(readWarning(xml)));
}

TEST(Warnings, LongOnesAreWhole) {
    const std::string words(20'000, 'x');
    EXPECT_EQ("warning: " + words, warningText(readWarning("<Event>" + words + "</Event>")));
}

}  // namespace
}  // namespace zavcli
