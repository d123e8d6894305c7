// Runs the command with the bundled scanners on this machine.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/CsvReader.h"
#include "tests/cli/Process.h"
#include "tests/cli/XmlReader.h"
#include "tests/support/Program.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

Ended bundled(std::vector<std::string> arguments) {
    return Process(std::move(arguments)).locationFile(std::nullopt).run();
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
    ASSERT_EQ(packages.size() + 1, xml->size()) << "the scanner's own report is among them";
    ASSERT_EQ(packages.size() + 1, csv.size()) << "a header and a record per package";
    for (std::size_t i = 0; i < packages.size(); ++i) {
        const auto& fields = xml->at(i).fields;
        ASSERT_EQ(fields.size(), csv.at(i + 1).size());
        for (std::size_t f = 0; f < fields.size(); ++f) {
            EXPECT_EQ(Json(fields[f].value), packages.at(i).at(fields[f].name));
            EXPECT_EQ(fields[f].name, csv.at(0).at(f));
            EXPECT_EQ(fields[f].value, csv.at(i + 1).at(f));
        }
    }
}

TEST(Bundled, InventoriesAreDocumentsOfTheSchemas) {
    const ScratchDir scratch;
    const std::string json = scratch.path() / "inventory.json";
    const std::string xml = scratch.path() / "inventory.xml";
    const auto validate = [](const std::string& file, const char* schema = ZAV_JSON_SCHEMA) {
        const char* const script =
            "import json, sys, jsonschema\n"
            "jsonschema.Draft202012Validator(json.load(open(sys.argv[1]))).validate(json.load(open(sys.argv["
            "2])))";
        return runProgram("/usr/bin/python3", {"-c", script, schema, file});
    };
    ASSERT_EQ(0, bundled({"hw", "--format", "json", "--output", json}).status);
    const Finished valid = validate(json);
    EXPECT_EQ(0, valid.status) << valid.errors;
    const std::string typed = scratch.path() / "typed.json";
    for (const char* hidden : {"--no-volatile", "--sanitize"}) {
        ASSERT_EQ(0, bundled({"facts", hidden, "--output", typed}).status);
        const Finished validFacts = validate(typed, ZAV_TYPED_SCHEMA);
        EXPECT_EQ(0, validFacts.status) << validFacts.errors;
        EXPECT_NE(0, validate(json, ZAV_TYPED_SCHEMA).status) << "strings are not numbers";
        EXPECT_NE(0, validate(typed).status);
    }
    ASSERT_EQ(0, bundled({"hw", "--format", "xml", "--output", xml}).status);
    const Finished validXml = runProgram("/usr/bin/xmllint", {"--noout", "--schema", ZAV_XML_SCHEMA, xml});
    EXPECT_EQ(0, validXml.status) << validXml.errors;

    Json wrong = Json::parse(readAll(json));
    wrong["groups"]["Memory"][0]["TotalVisibleMemorySize"] = "much";
    EXPECT_NE(0, validate(scratch.write("wrong.json", wrong.dump()).string()).status);
    wrong["groups"]["Memory"][0].erase("TotalVisibleMemorySize");
    EXPECT_NE(0, validate(scratch.write("wrong.json", wrong.dump()).string()).status);
}

TEST(Bundled, FieldsOfAGroupAreListedWithTypeUnitAndMeaning) {
    const Ended table = bundled({"groups", "storage", "5", "IPv6 Address"});
    ASSERT_EQ(0, table.status) << table.err;
    EXPECT_TRUE(table.out.starts_with("5 Storage\n")) << table.out;
    EXPECT_NE(std::string::npos, table.out.find("\n51 IPv6 Address\n")) << table.out;
    EXPECT_NE(std::string::npos, table.out.find("capacity; empty if there is no medium (count, bytes)"));
    const Json json = Json::parse(bundled({"groups", "Storage", "--format", "json"}).out);
    EXPECT_EQ("Storage", json.at("groups").at(0).at("name"));
    const auto csv = readCsv(bundled({"groups", "Storage", "--format", "csv"}).out);
    EXPECT_EQ(json.at("groups").at(0).at("fields").size() + 1, csv.size());
    EXPECT_EQ(2, bundled({"groups", "Storages"}).status);
}

TEST(Bundled, RootOptionScansAnotherTree) {
    const ScratchDir tree;
    tree.write("etc/os-release", "NAME=\"Other\"\nPRETTY_NAME=\"Other System 7\"\nID=other\n");
    const Ended ended =
        bundled({"hw", "--root", tree.path().string(), "--group", "Operating System", "--format", "json"});
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_NE(std::string::npos, ended.out.find("Other System 7")) << ended.out;
}

class HiddenValues : public testing::Test {
  protected:
    void SetUp() override {
        tree_.write("etc/hostname", "secret-host\n");
        tree_.write("etc/machine-id", "0123456789abcdef0123456789abcdef\n");
        tree_.write("proc/sys/kernel/random/boot_id", "11111111-2222-3333-4444-555555555555\n");
    }
    Json componentId(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"hw", "--root", tree_.path().string(), "--group", "ComponentID",
                                             "--group", "ScanInfo", "--format", "json"});
        const Ended ended = bundled(std::move(arguments));
        EXPECT_EQ(0, ended.status) << ended.err;
        return Json::parse(ended.out).at("groups").at("ComponentID").at(0);
    }

    ScratchDir tree_;
};

TEST_F(HiddenValues, SanitizeHashesWhatIdentifiesTheMachine) {
    EXPECT_EQ("secret-host", componentId({}).at("Name"));
    const Json hidden = componentId({"--sanitize"});
    EXPECT_EQ(16U, hidden.at("Name").get<std::string>().size());
    EXPECT_EQ(std::string::npos, hidden.dump().find("secret-host"));
    EXPECT_EQ(std::string::npos, hidden.dump().find("0123456789abcdef0123"));
    EXPECT_NE(hidden.at("Name"), componentId({"--sanitize"}).at("Name")) << "the key is not kept";
}

TEST_F(HiddenValues, NoVolatileOmitsWhatChanges) {
    EXPECT_EQ("11111111-2222-3333-4444-555555555555", componentId({}).at("BootId"));
    EXPECT_EQ("", componentId({"--no-volatile"}).at("BootId"));
    EXPECT_EQ("secret-host", componentId({"--no-volatile"}).at("Name"));
}

TEST_F(HiddenValues, PrettyChangesNoValue) {
    EXPECT_EQ(componentId({}), componentId({"--pretty"}));
}

constexpr const char* kSignatures = R"(<Signatures>
<Signature guid="one" name="Tool with its version">
 <Match><All><File id="f" path="/opt/tool/bin/tool" kind="file"/>
  <Property id="v" path="/opt/tool/release" format="properties" key="version" atLeast="2"/></All></Match>
 <Output><Variable name="version" value="${v.value}"/><Variable name="place" value="${f.path}"/></Output>
</Signature>
<Signature guid="two" name="Missing tool"><Match><File path="/opt/other/tool"/></Match></Signature>
</Signatures>
)";

// A tree in which the first signature matches.
std::string treeWithTool(const ScratchDir& scratch) {
    scratch.write("tree/opt/tool/bin/tool", "#!/bin/sh\n");
    scratch.write("tree/opt/tool/release", "version=2.10\n");
    return (scratch.path() / "tree").string();
}

TEST(Bundled, SoftwareIsFoundBySignatures) {
    const ScratchDir scratch;
    const std::string root = treeWithTool(scratch);
    const std::string file = scratch.write("signatures.xml", kSignatures).string();
    const Ended ended = bundled({"sw", file, "--root", root, "--format", "json"});
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ("", ended.err);
    const Json results = Json::parse(ended.out).at("results");
    ASSERT_EQ(1U, results.size());
    EXPECT_EQ("one", results.at(0).at("guid"));
    EXPECT_EQ("Tool with its version", results.at(0).at("name"));
    EXPECT_EQ((Json{{"place", "/opt/tool/bin/tool"}, {"version", "2.10"}}), results.at(0).at("variables"));
    EXPECT_FALSE(results.at(0).at("evidence").empty());
}

TEST(Bundled, NameIsTakenFromTheMatchedSignature) {
    const ScratchDir scratch;
    const std::string root = treeWithTool(scratch);
    const std::string file =
        scratch
            .write("s.xml",
                   "<Signatures><Signature guid=\"same\" name=\"Absent\"><Match>"
                   "<File path=\"/no/such\"/></Match></Signature>"
                   "<Signature guid=\"same\" name=\"Tool ${v.value} of &lt;${who}&gt;\"><Match><All>"
                   "<Property id=\"v\" path=\"/opt/tool/release\" format=\"properties\" "
                   "key=\"version\"/></All></Match></Signature></Signatures>")
            .string();
    const Ended ended = bundled({"sw", file, "--root", root, "--format", "json", "--variable", "who=us"});
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ("", ended.err);
    const Json results = Json::parse(ended.out).at("results");
    ASSERT_EQ(1U, results.size());
    EXPECT_EQ("Tool 2.10 of <us>", results.at(0).at("name"));
    EXPECT_FALSE(results.at(0).contains("metadata"));
}

TEST(Bundled, JoinedFilesFindWhatEachFinds) {
    const ScratchDir scratch;
    const std::string root = treeWithTool(scratch);
    const std::string file = scratch.write("a/1.xml", kSignatures).string();
    scratch.write("a/2.xml", kSignatures);
    const Ended ended = bundled({"sw", (scratch.path() / "a").string(), "--root", root, "--format", "json"});
    ASSERT_EQ(0, ended.status) << ended.err;
    const Json joined = Json::parse(ended.out).at("results");
    ASSERT_EQ(2U, joined.size());
    EXPECT_EQ(joined.at(0), joined.at(1));
    EXPECT_EQ(Json::parse(bundled({"sw", file, "--root", root, "--format", "json"}).out).at("results").at(0),
              joined.at(0));
}

TEST(Bundled, InvalidSignaturesAreReportedWithTheirLine) {
    const ScratchDir scratch;
    const std::string file =
        scratch
            .write("s.xml",
                   "<Signatures>\n<Signature guid=\"g\" name=\"n\"><Nope/></Signature>\n</Signatures>")
            .string();
    const Ended evaluated = bundled({"sw", file});
    EXPECT_EQ(1, evaluated.status);
    EXPECT_EQ(0U, evaluated.err.find("zav: " + file + ":2:")) << evaluated.err;
    const Ended checked = bundled({"sw", "--check", file});
    EXPECT_EQ(1, checked.status);
    EXPECT_EQ(0U, checked.out.find(file + ":2:")) << checked.out;
    EXPECT_EQ(0, bundled({"sw", "--check", scratch.write("t.xml", kSignatures).string()}).status);
}

TEST(Bundled, TableBeginsWithTheOperatingSystem) {
    const Ended ended = bundled({"hw"});
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(0U, ended.out.find("OperatingSystem\n")) << ended.out.substr(0, 200);
}

}  // namespace
}  // namespace zavtest
