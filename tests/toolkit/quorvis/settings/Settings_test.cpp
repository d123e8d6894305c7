#include "toolkit/quorvis/settings/Settings.h"

#include <gtest/gtest.h>

#include <functional>

using toolkit::quorvis::Event;
using toolkit::quorvis::EventCode;
using toolkit::quorvis::makeSettings;
using toolkit::quorvis::PluginSetting;
using toolkit::quorvis::Settings;

namespace {

constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;

using Strings = std::vector<std::string>;

Settings make(const std::vector<PluginSetting>& given) {
    std::vector<Event> events;
    Settings settings = makeSettings(given, events);
    EXPECT_TRUE(events.empty()) << events.front().text;
    return settings;
}

}  // namespace

TEST(PluginSettings, EveryAttributeSetsItsValue) {
    const std::tuple<PluginSetting, std::function<bool(const Settings&)>> cases[] = {
        {{"FileSystem", "root", "/tree"}, [](auto& s) { return s.fileSystem.root == "/tree"; }},
        {{"FileSystem", "maxDepth", "64"}, [](auto& s) { return s.fileSystem.maxDepth == 64; }},
        {{"FileSystem", "maxEntries", "7"}, [](auto& s) { return s.fileSystem.maxEntries == 7; }},
        {{"FileSystem", "maxEntriesPerDirectory", "8"},
         [](auto& s) { return s.fileSystem.maxEntriesPerDirectory == 8; }},
        {{"FileSystem", "maxMatches", "9"}, [](auto& s) { return s.fileSystem.maxMatches == 9; }},
        {{"FileSystem", "maxFileSize", "3M"},
         [](auto& s) {
             return s.fileSystem.maxContentSize == 3 * kMebibyte &&
                    s.fileSystem.maxHashedSize == 256 * kMebibyte;
         }},
        {{"FileSystem", "maxHashSize", "1 GiB"},
         [](auto& s) { return s.fileSystem.maxHashedSize == 1024 * kMebibyte; }},
        {{"FileSystem", "crossDevices", "false"}, [](auto& s) { return !s.fileSystem.crossDevices; }},
        {{"FileSystem", "remote", "yes"}, [](auto& s) { return s.fileSystem.remote; }},
        {{"FileSystem", "wholeTree", "1"}, [](auto& s) { return s.fileSystem.wholeTree; }},
        {{"FileSystem", "exclude", "/a"}, [](auto& s) { return s.fileSystem.exclude == Strings{"/a"}; }},
        {{"Packages", "types", "dpkg, RPM"},
         [](auto& s) {
             return s.packages.types == Strings{"dpkg", "rpm"};
         }},
        {{"Packages", "maxFiles", "7"}, [](auto& s) { return s.packages.maxFiles == 7; }},
        {{"Packages", "database", "/db"}, [](auto& s) { return s.packages.database == "/db"; }},
        {{"Processes", "enabled", "no"}, [](auto& s) { return !s.processes.enabled; }},
        {{"Swid", "enabled", "0"}, [](auto& s) { return !s.swid.enabled; }},
        {{"Swid", "directory", "/t"}, [](auto& s) { return s.swid.directories == Strings{"/t"}; }},
        {{"Evaluation", "timeLimit", "5"}, [](auto& s) { return s.evaluation.timeLimit.count() == 5; }},
        {{"Evaluation", "memoryLimit", "100k"}, [](auto& s) { return s.evaluation.memoryLimit == 102400; }},
        {{"Evaluation", "jobs", "64"}, [](auto& s) { return s.evaluation.jobs == 64; }},
        {{"Evaluation", "onInvalid", "skip"}, [](auto& s) { return s.evaluation.skipInvalid; }},
        {{"Evaluation", "evidence", "False"}, [](auto& s) { return !s.evaluation.evidence; }},
        {{"Evaluation", "cache", "/c"}, [](auto& s) { return s.evaluation.cache == "/c"; }},
    };
    for (const auto& [given, holds] : cases) {
        EXPECT_FALSE(holds(Settings())) << given.attribute;
        EXPECT_TRUE(holds(make({given}))) << given.attribute;
        std::string plugin = given.plugin;
        std::string attribute = given.attribute;
        for (char& c : plugin) c = static_cast<char>(std::toupper(c));
        for (char& c : attribute) c = static_cast<char>(std::tolower(c));
        EXPECT_TRUE(holds(make({{plugin, attribute, given.value}}))) << given.attribute;
    }
}

TEST(PluginSettings, LastOneWinsAndListsAccumulate) {
    const Settings settings = make({{"FileSystem", "maxDepth", "3"},
                                    {"FileSystem", "exclude", "/a"},
                                    {"Swid", "directory", "/s"},
                                    {"Packages", "types", "dpkg"},
                                    {"FileSystem", "maxDepth", "5"},
                                    {"FileSystem", "exclude", "/b"},
                                    {"Swid", "directory", "/t"},
                                    {"Packages", "types", "rpm snap"}});
    EXPECT_EQ(settings.fileSystem.maxDepth, 5U);
    EXPECT_EQ(settings.fileSystem.exclude, (Strings{"/a", "/b"}));
    EXPECT_EQ(settings.swid.directories, (Strings{"/s", "/t"}));
    EXPECT_EQ(settings.packages.types, (Strings{"dpkg", "rpm", "snap"}));
}

TEST(PluginSettings, InvalidOneIsAnEventAndKeepsTheDefault) {
    const PluginSetting cases[] = {
        {"Nonsense", "root", "/"},
        {"FileSystem", "nonsense", "1"},
        {"FileSystem", "root", ""},
        {"FileSystem", "maxDepth", "65"},
        {"FileSystem", "maxDepth", "0"},
        {"FileSystem", "maxEntries", "-1"},
        {"FileSystem", "maxEntries", "10 K"},
        {"FileSystem", "maxEntries", "99999999999999999999"},
        {"FileSystem", "maxFileSize", "M"},
        {"FileSystem", "maxFileSize", "1T"},
        {"FileSystem", "maxFileSize", "99999999999999G"},
        {"FileSystem", "crossDevices", "sometimes"},
        {"FileSystem", "exclude", "relative"},
        {"Packages", "types", "dpkg,msi"},
        {"Packages", "database", "db"},
        {"Swid", "directory", ""},
        {"Evaluation", "timeLimit", "soon"},
        {"Evaluation", "timeLimit", "0"},
        {"Evaluation", "jobs", "0"},
        {"Evaluation", "jobs", "65"},
        {"Evaluation", "jobs", "many"},
        {"Evaluation", "onInvalid", "ignore"},
        {"Evaluation", "evidence", ""},
        {"Evaluation", "cache", "relative"},
        {"Evaluation", "cache", ""},
    };
    for (const PluginSetting& given : cases) {
        std::vector<Event> events;
        const Settings settings = makeSettings({given}, events);
        ASSERT_EQ(events.size(), 1U) << given.attribute << "=" << given.value;
        EXPECT_EQ(events.front().code, EventCode::Config);
        EXPECT_TRUE(events.front().text.starts_with(given.plugin + "/" + given.attribute + ": "));
        EXPECT_EQ(settings.fileSystem.maxDepth, 12U);
        EXPECT_EQ(settings.fileSystem.maxEntries, 2'000'000U);
        EXPECT_EQ(settings.fileSystem.maxContentSize, 16 * kMebibyte);
        EXPECT_TRUE(settings.fileSystem.crossDevices && settings.evaluation.evidence);
        EXPECT_TRUE(settings.packages.types.empty() && settings.fileSystem.exclude.empty());
        EXPECT_TRUE(settings.fileSystem.root.empty() && settings.packages.database.empty());
        EXPECT_EQ(settings.evaluation.timeLimit.count(), 120);
        EXPECT_EQ(settings.evaluation.jobs, 2U);
    }
}
