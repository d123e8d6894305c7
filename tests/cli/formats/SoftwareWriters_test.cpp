// A software inventory in every format.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "cli/formats/CsvWriter.h"
#include "cli/formats/JsonWriter.h"
#include "cli/formats/SoftwareTableWriter.h"
#include "cli/formats/XmlWriter.h"
#include "cli/scan/Xml.h"
#include "tests/cli/CsvReader.h"

namespace zavcli {
namespace {

using Json = nlohmann::ordered_json;

SoftwareInventory sampleSoftware() {
    SoftwareInventory report;
    report.scan = {"zav 0.1.0", "2026-11-21T06:14:45Z", 12, "/opt/zav/bin", ""};
    report.files = 2;
    report.signatures = 5;
    report.matches = 3;
    report.results = {
        {"g-1",
         "A, \"B\" & <C>",
         {{"home", "/opt\n/x"}, {"version", "1.2"}},
         "<Metadata>\n  <Publisher>P &amp; Q</Publisher>\n  <Evidence kind=\"file\" "
         "source=\"/x\"/>\n</Metadata>"},
        {"g-2", "", {}, ""},
        {"g-1", "A, \"B\" & <C>", {{"version", "gr\xc3\xb6\xc3\x9f"}}, "<Metadata/>"},
    };
    report.warnings = {{{{"code", "io"}, {"path", "/x"}}, "cannot be read"}};
    return report;
}

TEST(SoftwareWriters, TableHasALinePerMatchAndASummary) {
    EXPECT_EQ(
        "Name          Version  Place     Package\n"
        "A, \"B\" & <C>  1.2      /opt\\n/x  unknown\n"
        "A, \"B\" & <C>  gr\xc3\xb6\xc3\x9f               unknown\n"
        "g-2                              unknown\n"
        "\n"
        "3 matches; 5 signatures in 2 files; 1 warning\n",
        tableText(sampleSoftware(), {}));
}

TEST(SoftwareWriters, DetailsAreAParagraphPerMatchAndASummary) {
    TableStyle style;
    style.everything = true;
    EXPECT_EQ(
        "A, \"B\" & <C>  1.2\n"
        "  GUID       g-1\n"
        "  Publisher  P & Q\n"
        "  home       /opt\\n/x\n"
        "  Evidence   file (/x)\n"
        "\n"
        "g-2\n"
        "  GUID  g-2\n"
        "\n"
        "A, \"B\" & <C>  gr\xc3\xb6\xc3\x9f\n"
        "  GUID  g-1\n"
        "\n"
        "3 matches; 5 signatures in 2 files; 1 warning\n",
        tableText(sampleSoftware(), style));
}

TEST(SoftwareWriters, TableReportsTheFilterAndMissingMatches) {
    SoftwareInventory report;
    report.files = 1;
    report.signatures = 1;
    EXPECT_EQ("no matches; 1 signature in 1 file\n", tableText(report, {}));
    report.matches = 4;
    EXPECT_EQ("no matches of 4 shown; 1 signature in 1 file\n", tableText(report, {}));
}

TEST(SoftwareWriters, JsonHoldsResultsAndWarnings) {
    const Json json = Json::parse(jsonText(sampleSoftware()));
    EXPECT_EQ((Json{{"guid", "g-1"},
                    {"name", "A, \"B\" & <C>"},
                    {"variables", {{"home", "/opt\n/x"}, {"version", "1.2"}}},
                    {"metadata", {{"Publisher", "P & Q"}}},
                    {"evidence", Json::array({{{"kind", "file"}, {"source", "/x"}}})}}),
              json.at("results").at(0));
    EXPECT_EQ((Json{{"guid", "g-2"}, {"variables", Json::object()}}), json.at("results").at(1));
    EXPECT_EQ(Json::array({{{"code", "io"}, {"path", "/x"}, {"text", "cannot be read"}}}),
              json.at("warnings"));
    EXPECT_EQ("/opt/zav/bin", json.at("scan").at("toolkit"));
}

TEST(SoftwareWriters, JsonWithoutResultsHasEmptyLists) {
    const Json json = Json::parse(jsonText(SoftwareInventory()));
    EXPECT_EQ(Json::array(), json.at("results"));
    EXPECT_EQ(Json::array(), json.at("warnings"));
}

TEST(SoftwareWriters, CsvHasARecordPerVariable) {
    const std::vector<zavtest::CsvRecord> records{
        {"result", "guid", "name", "variable", "value"},
        {"0", "g-1", "A, \"B\" & <C>", "home", "/opt\n/x"},
        {"0", "g-1", "A, \"B\" & <C>", "version", "1.2"},
        {"1", "g-2", "", "", ""},
        {"2", "g-1", "A, \"B\" & <C>", "version", "gr\xc3\xb6\xc3\x9f"},
    };
    EXPECT_EQ(records, zavtest::readCsv(csvText(sampleSoftware())));
}

TEST(SoftwareWriters, XmlKeepsMetadataAndValues) {
    const std::optional<XmlElement> root = readXmlElement(xmlText(sampleSoftware()));
    ASSERT_TRUE(root);
    EXPECT_EQ("MatchedSignatures", root->name);
    ASSERT_EQ(3U, root->children.size());
    const XmlElement& first = root->children[0];
    EXPECT_EQ("g-1", valueOf(first.attributes, "guid"));
    EXPECT_EQ("A, \"B\" & <C>", valueOf(first.attributes, "name"));
    ASSERT_EQ(3U, first.children.size());
    EXPECT_EQ("P & Q", first.children[0].children.at(0).text);
    EXPECT_EQ("/opt\n/x", valueOf(first.children[1].attributes, "value"));
    EXPECT_TRUE(root->children[1].children.empty());
}

}  // namespace
}  // namespace zavcli
