#include "toolkit/quorvah/scan/Configuration.h"

#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"

using toolkit::quorvah::Configuration;
using toolkit::quorvah::readConfiguration;

namespace {

Configuration read(const std::string& text) {
    const zavtest::ScratchDir dir;
    Configuration configuration = readConfiguration(dir.write("config.xml", text).string());
    const std::size_t directory = configuration.error.find(dir.path().string());
    if (directory == 0) configuration.error.erase(0, dir.path().string().size() + 1);
    return configuration;
}

}  // namespace

TEST(Configuration, ReadsWhatTheHostWrites) {
    const Configuration configuration = read(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<!--\n  A notice\n-->\n"
        "<QEL xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\" "
        "xsi:noNamespaceSchemaLocation=\"zavcli.xsd\">\n"
        "    <ZAV>\n"
        "\t\t<Hardware version=\"1.0\">\n"
        "\t\t<Group Name=\"Processor\"/>\n"
        "\t\t<Group Name=\"Operating System\"/>\n"
        "\t\t</Hardware>\n"
        "    </ZAV>\n"
        "</QEL>\n");
    EXPECT_EQ(configuration.error, "");
    EXPECT_EQ(configuration.groups, (std::vector<std::string>{"Processor", "Operating System"}));
    EXPECT_TRUE(configuration.warnings.empty());
}

TEST(Configuration, FindsGroupsAnywhere) {
    const Configuration configuration =
        read("<Group Name='a'><x><Group other='1' Name='b'>text</Group></x>t<Group Name='c'/></Group>");
    EXPECT_EQ(configuration.error, "");
    EXPECT_EQ(configuration.groups, (std::vector<std::string>{"a", "b", "c"}));
}

TEST(Configuration, HasNoGroupsWithoutElements) {
    for (const char* const text : {"<QEL/>", "<QEL><ZAV><Hardware/></ZAV></QEL>", "<group Name='x'/>"}) {
        EXPECT_EQ(read(text).error, "") << text;
        EXPECT_TRUE(read(text).groups.empty()) << text;
    }
}

TEST(Configuration, WarnsOfAGroupWithoutAName) {
    const Configuration configuration =
        read("<x><Group/><Group name='Processor'/><Group Name='Memory'/></x>");
    EXPECT_EQ(configuration.groups, (std::vector<std::string>{"Memory"}));
    EXPECT_EQ(configuration.warnings.size(), 2U);
}

TEST(Configuration, NamesComeAsUtf8) {
    EXPECT_EQ(read("<Group Name='&#8364;&#128512;'/>").groups,
              (std::vector<std::string>{"\xE2\x82\xAC\xF0\x9F\x98\x80"}));
}

TEST(Configuration, NamesTheFileAndTheLineOfAnError) {
    const std::pair<const char*, const char*> cases[] = {
        {"", "config.xml:"},
        {"<QEL>\n<ZAV>\n</QEL>", "config.xml:3: "},
        {"<QEL>\n", "config.xml:2: "},
        {"<QEL a=1/>", "config.xml:1: "},
        {"no markup", "config.xml:1: "},
        {"<a/>\n<b/>", "config.xml:2: "},
        {"<a>\n&undefined;</a>", "config.xml:2: "},
        {"<a>\xff</a>", "config.xml:1: "},
        {"<!DOCTYPE QEL [<!ENTITY x 'y'>]>\n<QEL/>", "config.xml:1: "},
    };
    for (const auto& [text, place] : cases) {
        const Configuration configuration = read(text);
        EXPECT_TRUE(configuration.error.starts_with(place)) << configuration.error;
        EXPECT_TRUE(configuration.groups.empty());
    }
}

TEST(Configuration, NamesAFileThatCannotBeRead) {
    const zavtest::ScratchDir dir;
    const std::string missing = (dir.path() / "missing.xml").string();
    EXPECT_TRUE(readConfiguration(missing).error.starts_with(missing + ": "))
        << readConfiguration(missing).error;
    EXPECT_TRUE(readConfiguration(dir.path().string()).error.starts_with(dir.path().string() + ": "));
}

TEST(Configuration, ReadsAFileWhosePathIsNotAscii) {
    const zavtest::ScratchDir dir;
    EXPECT_EQ(readConfiguration(dir.write("Gr\xC3\xBC\xC3\x9F"
                                          "e.xml",
                                          "<Group Name='x'/>")
                                    .string())
                  .groups.size(),
              1U);
}

TEST(Configuration, AcceptsDeeplyNestedElements) {
    std::string text;
    for (int i = 0; i < 20000; ++i) text += "<a>";
    text += "<Group Name='x'/>";
    for (int i = 0; i < 20000; ++i) text += "</a>";
    EXPECT_EQ(read(text).groups.size(), 1U);
}
