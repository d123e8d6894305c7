#include "cli/scan/EvaluationOptions.h"

#include <gtest/gtest.h>

#include <array>

#include "cli/system/Failure.h"

namespace zavcli {
namespace {

constexpr const char* kGuid = "6f0d1c52-8f0e-4C39-9a55-0b5a3d1f0001";

template <typename Action>
std::string refusal(Action action) {
    try {
        action();
    } catch (const Failure& failure) {
        EXPECT_EQ(kExitBadUsage, failure.status());
        return failure.what();
    }
    return "not refused";
}

TEST(EvaluationOptions, PresetHasANameAValueAndAnIdentifier) {
    const std::string guid = kGuid;
    const struct {
        std::string text;
        std::array<std::string, 3> parts;
    } cases[] = {
        {"a=1", {"a", "1", ""}},
        {"a=", {"a", "", ""}},
        {"a=b=c", {"a", "b=c", ""}},
        {"a=1@" + guid, {"a", "1", guid}},
        {"a=1@{" + guid + "}", {"a", "1", "{" + guid + "}"}},
        {"mail=me@example.com", {"mail", "me@example.com", ""}},
        {"mail=me@example.com@" + guid, {"mail", "me@example.com", guid}},
        {"a=1@" + guid + "0", {"a", "1@" + guid + "0", ""}},
        {"a=1@" + guid.substr(1), {"a", "1@" + guid.substr(1), ""}},
        {"a=@" + guid, {"a", "", guid}},
        {"a=1@zav.bash", {"a", "1", "zav.bash"}},
        {"a=1@ZAV.Bash", {"a", "1", "ZAV.Bash"}},
        {"a=1@zav.zsh", {"a", "1@zav.zsh", ""}},
    };
    for (const auto& [text, parts] : cases) {
        const Preset preset = parsePreset(text, {"zav.bash"});
        EXPECT_EQ(parts, (std::array{preset.name, preset.value, preset.guid})) << text;
    }
}

TEST(EvaluationOptions, PresetWithoutNameOrValueIsRefused) {
    for (const char* text : {"", "a", "=1", "@"})
        EXPECT_NE(std::string::npos, refusal([&] { parsePreset(text, {}); }).find("NAME=VALUE")) << text;
}

TEST(EvaluationOptions, RepeatedPresetIsRefused) {
    EXPECT_EQ(2U, parsePresets({"a=1", "b=1"}, {}).size());
    EXPECT_NE(std::string::npos, refusal([] {
                                     parsePresets({"a=1", "a=2"}, {});
                                 }).find("'a' is given twice"));
}

TEST(EvaluationOptions, SettingHasAPluginAnAttributeAndAValue) {
    const Setting setting = parseSetting("FileSystem.exclude=/a.b=c");
    EXPECT_EQ("FileSystem", setting.plugin);
    EXPECT_EQ("exclude", setting.attribute);
    EXPECT_EQ("/a.b=c", setting.value);
    EXPECT_EQ("", parseSetting("a.b=").value);
}

TEST(EvaluationOptions, MalformedSettingIsRefused) {
    for (const char* text : {"", "a", "a.b", "a=b.c", ".b=c", "a.=c", "=.", "."})
        EXPECT_NE(std::string::npos, refusal([&] { parseSetting(text); }).find("PLUGIN.ATTRIBUTE=VALUE"))
            << text;
}

}  // namespace
}  // namespace zavcli
