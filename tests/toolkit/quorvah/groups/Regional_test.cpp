#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(Regional, ReportsACapturedServer) {
    expectOnly(kRegional, "x86-server",
               {{"Locale", "de_AT.UTF-8"},
                {"CurrentTimeZone", "120"},
                {"Language", "de"},
                {"Territory", "AT"},
                {"CodeSet", "UTF-8"},
                {"TimeZoneName", "Europe/Vienna"},
                {"DaylightInEffect", "true"},
                {"KeyboardLayout", "de-nodeadkeys"},
                {"HardwareClock", "LOCAL"}});
}

TEST(Regional, ReadsTheFilesOfOtherDistributions) {
    expectOnly(kRegional, "arm64-board",
               {{"Locale", "en_GB.UTF-8"},
                {"Language", "en"},
                {"Territory", "GB"},
                {"CodeSet", "UTF-8"},
                {"TimeZoneName", "Europe/London"},
                {"KeyboardLayout", "gb"},
                {"KeyboardModel", "pc105"}});
}

TEST(Regional, DoesNotUseTheZoneOfTheHostForADanglingLink) {
    expectOnly(kRegional, "contradictory", {{"TimeZoneName", "Mars/Olympus"}});
}

TEST(Regional, ParsesShortLocales) {
    const struct {
        const char* locale;
        const char* language;
        const char* territory;
        const char* codeSet;
    } cases[] = {{"C", "C", "", ""},
                 {"C.UTF-8", "C", "", "UTF-8"},
                 {"sr_RS@latin", "sr", "RS", ""},
                 {"ca_ES.ISO-8859-15@euro", "ca", "ES", "ISO-8859-15"}};
    for (const auto& [locale, language, territory, codeSet] : cases) {
        const ScratchDir tree;
        tree.write("etc/locale.conf", std::string("LANG=") + locale + "\n");
        const GroupData data = gatheredBelow(kRegional, tree.path());
        ASSERT_EQ(data.instances().size(), 1U) << locale;
        EXPECT_EQ(data.instances().front().get("Language"), language);
        EXPECT_EQ(data.instances().front().get("Territory"), territory);
        EXPECT_EQ(data.instances().front().get("CodeSet"), codeSet);
    }
}

}  // namespace
}  // namespace toolkit::quorvah
