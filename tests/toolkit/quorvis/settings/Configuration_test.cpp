#include "toolkit/quorvis/settings/Settings.h"

#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"

using toolkit::quorvis::Configuration;
using toolkit::quorvis::EventCode;
using toolkit::quorvis::readConfiguration;

namespace {

Configuration read(const std::string& text) {
    const zavtest::ScratchDir dir;
    return readConfiguration(dir.write("config.xml", text).string());
}

// "name=value (guid)"
std::vector<std::string> presetsOf(const Configuration& configuration) {
    std::vector<std::string> presets;
    for (const auto& preset : configuration.presets)
        presets.push_back(preset.name + "=" + preset.value + " (" + preset.guid + ")");
    return presets;
}

// "plugin/attribute=value"
std::vector<std::string> settingsOf(const Configuration& configuration) {
    std::vector<std::string> settings;
    for (const auto& setting : configuration.settings)
        settings.push_back(setting.plugin + "/" + setting.attribute + "=" + setting.value);
    return settings;
}

// A configuration as the library writes it. Values are not escaped.
std::string written(const std::string& presetValue, const std::string& settingValue) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<QEL xmlns:xsi=\"http://www.w3.org/2001/XMLSchema-instance\">\n"
           "    <ZAV>\n"
           "\t\t<XSE version=\"1.0\">\n"
           "\t\t\t<PresetVariables>\n"
           "\t\t\t\t<Variable name=\"first\" value=\"" +
           presetValue +
           "\" guid=\"G-1\" />\n"
           "\t\t\t\t<Variable name=\"second\" value=\"2\" guid=\"\" />\n"
           "\t\t\t</PresetVariables>\n"
           "\t\t\t<Plugins>\n"
           "\t\t\t\t<Plugin name=\"FileSystem\" version=\"1.0\">\n"
           "\t\t\t\t\t<Attribute name=\"exclude\" value=\"" +
           settingValue +
           "\"/>\n"
           "\t\t\t\t</Plugin>\n"
           "\t\t\t\t<Plugin name=\"Swid\" version=\"1.0\">\n"
           "\t\t\t\t\t<Attribute name=\"enabled\" value=\"0\"/>\n"
           "\t\t\t\t</Plugin>\n"
           "\t\t\t</Plugins>\n"
           "\t\t</XSE>\n"
           "    </ZAV>\n"
           "</QEL>\n";
}

}  // namespace

TEST(SignatureConfiguration, ReadsWhatTheLibraryWrites) {
    const Configuration configuration = read(written("1", "/srv"));
    EXPECT_EQ(configuration.error, "");
    EXPECT_TRUE(configuration.events.empty());
    EXPECT_EQ(presetsOf(configuration), (std::vector<std::string>{"first=1 (G-1)", "second=2 ()"}));
    EXPECT_EQ(settingsOf(configuration),
              (std::vector<std::string>{"FileSystem/exclude=/srv", "Swid/enabled=0"}));
}

TEST(SignatureConfiguration, FindsItsElementsAtAnyDepth) {
    const Configuration configuration = read(
        "<x><Variable name='a' value='&lt;&#8364;'/><Hardware><Group Name='g'/><Plugin name='P'><y>"
        "<Attribute name='b' value='1'/></y></Plugin></Hardware><Attribute name='c' value='2'/></x>");
    EXPECT_EQ(presetsOf(configuration), (std::vector<std::string>{"a=<\xE2\x82\xAC ()"}));
    EXPECT_EQ(settingsOf(configuration), (std::vector<std::string>{"P/b=1", "/c=2"}));
}

TEST(SignatureConfiguration, ReadsIllFormedFilesLineByLine) {
    for (const std::string value : {"a&b", "<", "a<b>&c;", "say \"hi\"", "\" guid=\"", "&amp;&", "\" />&"}) {
        const Configuration configuration = read(written(value, value + "&"));
        EXPECT_EQ(configuration.error, "");
        ASSERT_EQ(configuration.events.size(), 1U) << value;
        EXPECT_EQ(configuration.events.front().code, EventCode::Config);
        EXPECT_EQ(presetsOf(configuration),
                  (std::vector<std::string>{"first=" + value + " (G-1)", "second=2 ()"}));
        EXPECT_EQ(settingsOf(configuration),
                  (std::vector<std::string>{"FileSystem/exclude=" + value + "&", "Swid/enabled=0"}));
    }
}

TEST(SignatureConfiguration, ReadsInvalidUtf8AsLatin1) {
    const Configuration wellFormed = read(written("M\xFCller", "/\xE9"));
    EXPECT_TRUE(wellFormed.events.empty());
    EXPECT_EQ(presetsOf(wellFormed).front(), "first=M\xC3\xBCller (G-1)");
    EXPECT_EQ(settingsOf(wellFormed).front(), "FileSystem/exclude=/\xC3\xA9");
    const Configuration illFormed = read(written("M\xFCller & Co", "/\xE9"));
    EXPECT_EQ(illFormed.events.size(), 1U);
    EXPECT_EQ(presetsOf(illFormed).front(), "first=M\xC3\xBCller & Co (G-1)");
    EXPECT_EQ(settingsOf(illFormed).front(), "FileSystem/exclude=/\xC3\xA9");
    const Configuration utf8 = read(written("M\xC3\xBCller", "/"));
    EXPECT_EQ(presetsOf(utf8).front(), "first=M\xC3\xBCller (G-1)");
}

TEST(SignatureConfiguration, ReportsUnreadableFiles) {
    const zavtest::ScratchDir dir;
    for (const std::string& path : {(dir.path() / "missing.xml").string(), dir.path().string()})
        EXPECT_TRUE(readConfiguration(path).error.starts_with(path + ": ")) << readConfiguration(path).error;
}

TEST(SignatureConfiguration, IsEmptyWithoutItsElements) {
    for (const std::string text : {"<QEL/>", "no markup at all", ""}) {
        const Configuration configuration = read(text);
        EXPECT_EQ(configuration.error, "");
        EXPECT_EQ(configuration.events.size(), text == "<QEL/>" ? 0U : 1U) << text;
        EXPECT_TRUE(configuration.presets.empty() && configuration.settings.empty());
    }
}
