// The command with the scanner that comes with it, on this machine.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/CsvReader.h"
#include "tests/cli/Process.h"
#include "tests/cli/XmlReader.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

Ended bundled(std::vector<std::string> arguments) {
    return Process(std::move(arguments)).configuration(std::nullopt).run();
}

TEST(Bundled, DoctorFindsNoProblem) {
    const Ended ended = bundled({"doctor"});
    EXPECT_EQ(0, ended.status) << ended.out;
    EXPECT_EQ(std::string::npos, ended.out.find("problem")) << ended.out;
}

TEST(Bundled, InventoryDescribesItsOwnScan) {
    const Ended ended = bundled({"hw", "--format", "json"});
    ASSERT_EQ(0, ended.status) << ended.err;
    const Json json = Json::parse(ended.out);
    ASSERT_EQ(1U, json.at("groups").at("ScanInfo").size());
    EXPECT_NE("", json.at("groups").at("ScanInfo").at(0).at("ScannerName"));
    EXPECT_EQ(48U, json.at("groups").size());
}

TEST(Bundled, FormatsAgree) {
    const Json json = Json::parse(bundled({"hw", "--group", "SoftwarePackages", "--format", "json"}).out);
    const auto xml = readXml(bundled({"hw", "--group", "SoftwarePackages", "--format", "xml"}).out);
    const auto csv = readCsv(bundled({"hw", "--group", "SoftwarePackages", "--format", "csv"}).out);
    const Json& packages = json.at("groups").at("SoftwarePackages");
    ASSERT_TRUE(xml);
    ASSERT_EQ(packages.size(), xml->size());
    std::size_t record = 1;
    for (std::size_t i = 0; i < packages.size(); ++i) {
        for (const auto& field : xml->at(i).fields) {
            ASSERT_LT(record, csv.size());
            EXPECT_EQ(field.value, packages.at(i).at(field.name));
            EXPECT_EQ((CsvRecord{"SoftwarePackages", std::to_string(i), field.name, field.value}),
                      csv[record++]);
        }
    }
    EXPECT_EQ(csv.size(), record);
}

TEST(Bundled, RootScansAnotherTree) {
    const ScratchDir tree;
    tree.write("etc/os-release", "NAME=\"Other\"\nPRETTY_NAME=\"Other System 7\"\nID=other\n");
    const Ended ended =
        bundled({"hw", "--root", tree.path().string(), "--group", "Operating System", "--format", "json"});
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_NE(std::string::npos, ended.out.find("Other System 7")) << ended.out;
}

TEST(Bundled, TableIsReadable) {
    const Ended ended = bundled({"hw"});
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(0U, ended.out.find("OperatingSystem\n")) << ended.out.substr(0, 200);
}

}  // namespace
}  // namespace zavtest
