// Runs `zav facts`, and `zav hw` in the formats that programs read, with test scanners and with the bundled ones.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/MetricsReader.h"
#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/Program.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kInventory =
    "<Inventory>"
    "<ComponentID><Name>box \"1\"\\</Name><Manufacturer>A&#10;B</Manufacturer><ProductName/></ComponentID>"
    "<OperatingSystem><Id>debian</Id><VersionId>12</VersionId></OperatingSystem>"
    "<Processor><DeviceID>cpu0</DeviceID><EnabledState>Enabled</EnabledState></Processor>"
    "<Processor><DeviceID>cpu1</DeviceID><EnabledState>Disabled</EnabledState></Processor>"
    "<Memory><TotalVisibleMemorySize>24684084</TotalVisibleMemorySize><InstalledMemory/></Memory>"
    "<SoftwarePackages><Name>bash</Name><PackageFormat>dpkg</PackageFormat></SoftwarePackages>"
    "<SoftwarePackages><Name>1.10</Name><PackageFormat>dpkg</PackageFormat></SoftwarePackages>"
    "<SoftwarePackages><Name>yes</Name><PackageFormat>snap</PackageFormat></SoftwarePackages>"
    "<Storage><DeviceID>/dev/sda</DeviceID><Size>much</Size><Removable>false</Removable></Storage>"
    "<ScanInfo><Privileged>true</Privileged><GroupsComplete>ComponentID;OperatingSystem</GroupsComplete>"
    "<GroupsPartial>Memory=permission</GroupsPartial><GroupsUnread>SoftwarePackages=dpkg-broken</"
    "GroupsUnread>"
    "</ScanInfo></Inventory>";

class FactsTest : public testing::Test {
  protected:
    Ended run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin() + 1, {"--toolkit", scanner("copies")});
        return Process(arguments).environment("ZAVTEST_OUTPUT", prepared_).run();
    }
    std::vector<Json> lines(const std::string& text) {
        std::vector<Json> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) lines.push_back(Json::parse(line));
        return lines;
    }

    ScratchDir scratch_;
    std::string prepared_ = scratch_.write("prepared.xml", kInventory).string();
};

TEST_F(FactsTest, AnsibleGetsTheTypedDocumentOnOneLine) {
    const Ended ended = run({"facts"});
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(ended.out.size() - 1, ended.out.find('\n'));
    const Json facts = Json::parse(ended.out);
    EXPECT_EQ(Json("box \"1\"\\"), facts.at("scan").at("host"));
    EXPECT_EQ(Json(24684084), facts.at("groups").at("Memory").at(0).at("TotalVisibleMemorySize"));
    EXPECT_EQ(Json(), facts.at("groups").at("Memory").at(0).at("InstalledMemory"));
    EXPECT_EQ(Json(false), facts.at("groups").at("Storage").at(0).at("Removable"));
    EXPECT_EQ(Json("much"), facts.at("groups").at("Storage").at(0).at("Size"))
        << "not in the form of a count";
    EXPECT_EQ(Json::array({"ComponentID", "OperatingSystem"}),
              facts.at("groups").at("ScanInfo").at(0).at("GroupsComplete"));
}

TEST_F(FactsTest, IncompleteGroupsDoNotCostAnsibleItsFacts) {
    const Ended ended = run({"facts", "--group", "SoftwarePackages"});
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("zav: could not be read: SoftwarePackages: the dpkg database is damaged\n", ended.err);
    EXPECT_EQ("unread", Json::parse(ended.out).at("status").at("SoftwarePackages").at("status"));
}

TEST_F(FactsTest, MetricsAreValidAndCount) {
    const Ended ended = run({"facts", "--format", "prometheus"});
    ASSERT_EQ(0, ended.status) << ended.err;
    const auto metrics = readMetrics(ended.out);
    ASSERT_TRUE(metrics) << ended.out;
    EXPECT_EQ("1",
              metrics->at("zav_machine_info{host=\"box \\\"1\\\"\\\\\",manufacturer=\"A\\nB\",product=\"\","
                          "virtualization=\"\"}"));
    EXPECT_EQ("2", metrics->at("zav_packages{format=\"dpkg\"}"));
    EXPECT_EQ("1", metrics->at("zav_packages{format=\"snap\"}"));
    EXPECT_EQ("1", metrics->at("zav_processors{state=\"offline\"}"));
    EXPECT_EQ(std::to_string(24684084ULL * 1024), metrics->at("zav_memory_visible_bytes"));
    EXPECT_FALSE(metrics->contains("zav_memory_installed_bytes")) << "unknown";
    EXPECT_EQ("1", metrics->at("zav_group_complete{group=\"ComponentID\",reason=\"\"}"));
    EXPECT_EQ("0", metrics->at("zav_group_complete{group=\"SoftwarePackages\",reason=\"dpkg-broken\"}"));
}

TEST_F(FactsTest, ReaderOfMetricsIsStrict) {
    EXPECT_TRUE(readMetrics("# HELP a b\n# TYPE a gauge\na{b=\"c\"} 1\n"));
    for (const char* text :
         {"# HELP a b\n# TYPE a gauge\na{b=\"c\"} 1", "a 1\n", "# HELP a b\n# TYPE a gauge\na{b=\"\\x\"} 1\n",
          "# HELP a b\n# TYPE a gauge\na 1\na 2\n", "# HELP a b\n# TYPE c gauge\nc 1\n",
          "# HELP a b\n# TYPE a gauge\na{b=c} 1\n"})
        EXPECT_FALSE(readMetrics(text)) << text;
}

TEST_F(FactsTest, JsonLinesHaveHostAndTimeOnEveryLine) {
    const Ended ended = run({"hw", "--format", "jsonl", "-g", "Memory", "-g", "Processor"});
    const std::vector<Json> facts = lines(ended.out);
    ASSERT_EQ(6U, facts.size()) << "the scan, two groups, three instances";
    for (const Json& line : facts) {
        EXPECT_EQ(Json("box \"1\"\\"), line.at("host"));
        EXPECT_EQ(facts[0].at("scan").at("time"), line.at("time"));
    }
    EXPECT_EQ("partial", facts[1].at("status"));
    EXPECT_EQ("permission", facts[1].at("reason"));
    EXPECT_EQ("24684084", facts[2].at("fields").at("TotalVisibleMemorySize")) << "texts without --typed";
    EXPECT_EQ(1, facts[5].at("instance"));
    EXPECT_EQ("cpu1", facts[5].at("fields").at("DeviceID"));
    const auto typed = lines(run({"hw", "--format", "jsonl", "--typed", "-g", "Memory"}).out);
    EXPECT_EQ(Json(24684084), typed.at(2).at("fields").at("TotalVisibleMemorySize"));
}

TEST_F(FactsTest, YamlIsTheDocumentOfJson) {
    for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"--typed"}}) {
        std::vector<std::string> words{"hw", "--format", "yaml"};
        words.insert(words.end(), more.begin(), more.end());
        const std::string yaml = scratch_.write("a.yaml", run(words).out).string();
        words[2] = "json";
        const Json json = Json::parse(run(words).out);
        const Finished read = runProgram(
            "/usr/bin/python3",
            {"-c", "import json, sys, yaml; print(json.dumps(yaml.safe_load(open(sys.argv[1]))))", yaml});
        ASSERT_EQ(0, read.status) << read.errors;
        EXPECT_EQ(json.at("groups"), Json::parse(read.output).at("groups"));
    }
}

TEST_F(FactsTest, TypedDocumentHasNoDifferencesToThatOfStrings) {
    const std::string typed = scratch_.write("typed.json", run({"facts"}).out).string();
    const std::string plain = scratch_.write("plain.json", run({"hw", "--format", "json"}).out).string();
    const Ended ended = Process({"diff", typed, plain}).run();
    EXPECT_EQ(0, ended.status) << ended.out << ended.err;
}

}  // namespace
}  // namespace zavtest
