// How `zav hw` reports groups that could not be read, with the bundled scanner and with others.
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/CsvReader.h"
#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/cli/XmlReader.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

class IncompleteGroupsTest : public testing::Test {
  protected:
    Ended hw(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"hw", "--root", (scratch_.path() / "tree").string()});
        return Process(std::move(arguments)).locationFile(std::nullopt).run();
    }
    void damageRpmDatabase() { scratch_.write("tree/usr/lib/sysimage/rpm/rpmdb.sqlite", "no database"); }

    ScratchDir scratch_;
    std::filesystem::path file_ = scratch_.write("tree/etc/os-release", "ID=some\nPRETTY_NAME=Some\n");
};

TEST_F(IncompleteGroupsTest, DamagedDatabaseIsReportedInEveryFormat) {
    damageRpmDatabase();
    const std::string message = "zav: could not be read: SoftwarePackages: the rpm database is damaged\n";
    const Ended table = hw({"--group", "25"});
    EXPECT_EQ(3, table.status);
    EXPECT_EQ("Could not be read: SoftwarePackages (the rpm database is damaged).\n", table.out);
    EXPECT_NE(std::string::npos, table.err.find(message)) << table.err;
    const Ended json = hw({"--group", "25", "--format", "json"});
    EXPECT_EQ(3, json.status);
    EXPECT_NE(std::string::npos, json.err.find(message)) << json.err;
    EXPECT_EQ((Json{{"SoftwarePackages", {{"status", "unread"}, {"reason", "rpm-broken"}}}}),
              Json::parse(json.out).at("status"));
    EXPECT_EQ(Json::parse("{\"SoftwarePackages\": []}"), Json::parse(json.out).at("groups"));
    const Ended oneGroup = hw({"--group", "25", "--format", "csv"});
    EXPECT_EQ(3, oneGroup.status);
    EXPECT_NE(std::string::npos, oneGroup.err.find(message)) << oneGroup.err;
    const Ended csv = hw({"--group", "25", "--group", "Lpar", "--format", "csv"});
    EXPECT_EQ(3, csv.status);
    EXPECT_EQ(0U, csv.out.find("group,instance,field,value\r\nSoftwarePackages,,_status,unread\r\n"
                               "SoftwarePackages,,_reason,rpm-broken\r\nLpar,,_status,"))
        << csv.out;
    const Ended xml = hw({"--group", "25", "--format", "xml"});
    EXPECT_EQ(3, xml.status);
    EXPECT_NE(std::string::npos, xml.out.find("<GroupsUnread>SoftwarePackages=rpm-broken</GroupsUnread>"))
        << xml.out;
}

TEST_F(IncompleteGroupsTest, OutputFileIsWrittenIfAGroupCannotBeRead) {
    damageRpmDatabase();
    const std::string out = (scratch_.path() / "out.json").string();
    EXPECT_EQ(3, hw({"--group", "25", "--group", "4", "--format", "json", "--output", out}).status);
    EXPECT_EQ("Some", Json::parse(readAll(out)).at("groups").at("OperatingSystem").at(0).at("Caption"));
}

TEST_F(IncompleteGroupsTest, GroupsThatATreeCannotContainAreNotApplicable) {
    const Ended ended = hw({"--group", "PCI Device", "--group", "WinCluster", "--format", "json"});
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ((Json{{"PCIDevice", {{"status", "not-applicable"}, {"reason", "not-in-tree"}}},
                    {"WinCluster", {{"status", "not-applicable"}, {"reason", "windows"}}}}),
              Json::parse(ended.out).at("status"));
}

TEST_F(IncompleteGroupsTest, EmptyDatabaseIsComplete) {
    scratch_.write("tree/var/lib/dpkg/status", "");
    const Ended ended = hw({"--group", "25"});
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("Nothing found for: SoftwarePackages.\n", ended.out);
    EXPECT_EQ("", ended.err);
}

TEST_F(IncompleteGroupsTest, UnsupportedGroupFailsOnlyIfItIsNamed) {
    const std::string output =
        scratch_
            .write("p.xml",
                   "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Inventory><ScanInfo>"
                   "<GroupsUnsupported>Printer;Modem</GroupsUnsupported></ScanInfo></Inventory>")
            .string();
    const auto other = [&output](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"hw", "--toolkit", scanner("copies")});
        return Process(std::move(arguments)).environment("ZAVTEST_OUTPUT", output).run();
    };
    const Ended named = other({"--group", "Printer"});
    EXPECT_EQ(3, named.status);
    EXPECT_EQ("Not implemented by this scanner: Printer.\n", named.out);
    EXPECT_EQ("zav: not implemented by this scanner: Printer\n", named.err);
    const Ended all = other({"--format", "json"});
    EXPECT_EQ(0, all.status) << all.err;
    EXPECT_EQ("unsupported", Json::parse(all.out).at("status").at("Printer").at("status"));
    EXPECT_NE(std::string::npos, all.err.find("zav: not implemented by this scanner: Printer, Modem\n"))
        << all.err;
}

TEST_F(IncompleteGroupsTest, ScanInfoIsShownOnlyOnRequest) {
    EXPECT_FALSE(Json::parse(hw({"--group", "4", "--format", "json"}).out).at("groups").contains("ScanInfo"));
    const Json both = Json::parse(hw({"--group", "4", "--group", "20", "--format", "json"}).out);
    EXPECT_EQ(1U, both.at("groups").at("ScanInfo").size());
    EXPECT_EQ("complete", both.at("status").at("ScanInfo").at("status"));
    const auto xml = readXml(hw({"--group", "20", "--format", "xml"}).out);
    ASSERT_TRUE(xml);
    EXPECT_EQ(1U, xml->size()) << "it is there once";
}

TEST_F(IncompleteGroupsTest, GroupsAreUnknownWithoutAReportOfTheScanner) {
    const Ended ended =
        Process({"hw", "--toolkit", scanner("copies"), "--group", "Processor", "--format", "json"})
            .environment("ZAVTEST_OUTPUT", scratch_.write("p.xml", kPreparedOutput).string())
            .run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.err);
    const Json json = Json::parse(ended.out);
    EXPECT_EQ("unknown", json.at("status").at("Processor").at("status"));
    EXPECT_EQ(2U, json.at("groups").at("Processor").size());
}

TEST(GroupList, MarksGroupsThatDoNotApply) {
    const Ended ended = Process({"groups"}).locationFile(std::nullopt).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.err);
    EXPECT_NE(std::string::npos, ended.out.find("\n 2  Processor\n")) << ended.out;
    EXPECT_NE(std::string::npos, ended.out.find("\n14  Printer\n"));
    EXPECT_EQ(std::string::npos, ended.out.find("not implemented"));
    EXPECT_NE(std::string::npos,
              ended.out.find("\n40  WinCluster            not applicable here: Windows only\n"));
}

TEST(GroupList, HasNoMarksWithoutAReportOfTheScanner) {
    const ScratchDir scratch;
    const Ended foreign = Process({"groups", "--toolkit", scanner("copies"), "--format", "json"})
                              .environment("ZAVTEST_OUTPUT", scratch.write("p.xml", kPreparedOutput).string())
                              .run();
    EXPECT_EQ(0, foreign.status);
    EXPECT_EQ("unknown", Json::parse(foreign.out).at("groups").at(0).at("status"));
    EXPECT_EQ(1, Process({"groups", "--toolkit", scanner("fails")}).run().status);
}

}  // namespace
}  // namespace zavtest
