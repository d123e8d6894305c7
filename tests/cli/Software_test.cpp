// Runs `zav sw` as a whole process with test scanners.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/CsvReader.h"
#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kOne =
    "<?xml version=\"1.0\"?>\n<!-- one -->\n<Signatures>\n<Signature guid=\"g1\" name=\"One\"/>\n"
    "</Signatures>\n";
constexpr const char* kTwo = "<Signatures><Signature guid=\"g2\" name=\"Gr\xc3\xb6\xc3\x9f\"/></Signatures>";
constexpr const char* kBad = "<Signatures>\n\n\n<Bad/></Signatures>";
constexpr const char* kLatin =
    "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><Signatures><Signature guid=\"g3\" "
    "name=\"gr\xf6\xdf\"/></Signatures>";
constexpr const char* kResults =
    "<MatchedSignatures><MatchedSignature guid=\"G1\"><Metadata><Name>Gr&#246;&#223;</Name></Metadata>"
    "<Variable name=\"version\" value=\"1.0 &#128512;\"/><Variable name=\"home\" value=\"/opt\"/>"
    "</MatchedSignature><MatchedSignature guid=\"g1\"/><MatchedSignature guid=\"g2\"/></MatchedSignatures>";

class SoftwareTest : public testing::Test {
  protected:
    Process sw(std::vector<std::string> arguments, const std::string& scannerName = "answers") {
        arguments.insert(arguments.begin(), {"sw", "--toolkit", scanner(scannerName)});
        return Process(arguments)
            .environment("ZAVTEST_GIVEN", path("given"))
            .environment("TEMP", path("tmp"));
    }
    std::string file(const std::string& name, const std::string& content) {
        return scratch_.write(name, content).string();
    }
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    // The input that the scanner saved in the given run.
    std::string given(const std::string& what, int run = 1) const {
        return readAll(path("given/" + what + std::to_string(run)));
    }
    bool ranOnce() const {
        return std::filesystem::exists(path("given/signatures1")) &&
               !std::filesystem::exists(path("given/signatures2"));
    }
    static std::vector<std::string> guidsOf(const Ended& ended) {
        EXPECT_EQ(0, ended.status) << ended.err;
        std::vector<std::string> guids;
        if (ended.status != 0) return guids;
        const Json json = Json::parse(ended.out);
        for (const Json& result : json.at("results")) guids.push_back(result.at("guid"));
        return guids;
    }
    static void expectSays(const std::string& text, const std::string& part) {
        EXPECT_NE(std::string::npos, text.find(part)) << part << "\nis not in\n" << text;
    }

    ScratchDir scratch_;

    void SetUp() override {
        std::filesystem::create_directory(path("given"));
        std::filesystem::create_directory(path("tmp"));
    }
    void TearDown() override { EXPECT_TRUE(std::filesystem::is_empty(path("tmp"))); }
};

using Guids = std::vector<std::string>;

TEST_F(SoftwareTest, TableNamesMatchesFromTheSignatureFile) {
    const Ended ended = sw({file("one.xml", kOne)}).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.err);
    EXPECT_EQ(
        "Name  Version  Place  Package\nOne                   unknown\n\n1 match; 1 signature in 1 file\n",
        ended.out);
}

TEST_F(SoftwareTest, NamesOfTheResultsArePreferred) {
    const std::string prepared = file("prepared.xml", kResults);
    const Ended ended =
        sw({file("one.xml", kOne), "--details"}).environment("ZAVTEST_OUTPUT", prepared).run();
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(
        "Gr\xc3\xb6\xc3\x9f  1.0 \xf0\x9f\x98\x80\n  GUID  G1\n  home  /opt\n\nOne\n  GUID  g1\n\n"
        "g2\n  GUID  g2\n\n3 matches; 1 signature in 1 file\n",
        ended.out);
}

TEST_F(SoftwareTest, SingleFileIsReadByTheScanner) {
    EXPECT_EQ(0, sw({file("one.xml", kOne)}).run().status);
    EXPECT_EQ(kOne, given("signatures"));
    EXPECT_EQ("none", given("root"));
}

TEST_F(SoftwareTest, SeveralFilesAreEvaluatedInOneRun) {
    const Ended ended = sw({file("two.xml", kTwo), file("one.xml", kOne), "--format", "json"}).run();
    EXPECT_EQ((Guids{"g2", "g1"}), guidsOf(ended));
    EXPECT_TRUE(ranOnce());
    EXPECT_EQ(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Signatures>\n"
        "<Signature guid=\"g2\" name=\"Gr\xc3\xb6\xc3\x9f\"/>\n<Signature guid=\"g1\" name=\"One\"/>\n"
        "</Signatures>\n",
        given("signatures"));
}

TEST_F(SoftwareTest, FilesThatCannotBeJoinedAreEvaluatedSeparately) {
    const Ended ended =
        sw({file("1.xml", kLatin), file("2.xml", kOne), file("3.xml", kTwo), "--format", "json"}).run();
    EXPECT_EQ((Guids{"g3", "g1", "g2"}), guidsOf(ended));
    EXPECT_EQ(kLatin, given("signatures", 1));
    expectSays(given("signatures", 2), "g1");
    expectSays(given("signatures", 2), "g2");
}

TEST_F(SoftwareTest, DirectoryStandsForItsXmlFiles) {
    file("d/b.xml", kOne);
    file("d/a.xml", kTwo);
    EXPECT_EQ((Guids{"g2", "g1"}), guidsOf(sw({path("d"), "--format", "json"}).run()));
}

TEST_F(SoftwareTest, RefusedFileIsReportedWithItsLine) {
    const std::string bad = file("bad.xml", kBad);
    const std::string message = "zav: " + bad +
                                ":4:1: unknown element Bad\n"
                                "zav: the scanner refuses the signatures of " +
                                bad + "\n";
    for (const auto& files : {Guids{bad}, Guids{file("one.xml", kOne), bad, file("two.xml", kTwo)}}) {
        const Ended ended = sw(files).run();
        EXPECT_EQ(1, ended.status);
        EXPECT_EQ("", ended.out);
        EXPECT_EQ(message, ended.err);
    }
}

TEST_F(SoftwareTest, FilesAreCheckedWithoutBeingEvaluated) {
    const std::string bad = file("bad.xml", kBad);
    const std::string one = file("one.xml", kOne);
    const Ended ended = sw({"--check", bad, one}).run();
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ(bad + ":4:1: unknown element Bad\n" + one + ": valid\n", ended.out);
    EXPECT_EQ(0, sw({"--check", one}).run().status);
    EXPECT_TRUE(std::filesystem::is_empty(path("given")));
}

TEST_F(SoftwareTest, ScannerThatCannotCheckIsReported) {
    for (const char* name : {"cut_off", "crashes"}) {
        const Ended ended = sw({"--check", file("one.xml", kOne)}, name).run();
        EXPECT_EQ(1, ended.status) << name;
        expectSays(ended.err, "zav: the scanner " + scanner(name) + "/quorvis cannot check signatures");
    }
}

TEST_F(SoftwareTest, SignatureIsExplainedByTheScanner) {
    const Ended ended = sw({"--explain", "G2", file("one.xml", kOne), file("two.xml", kTwo), "--variable",
                            "a=<", "--config", "FileSystem.maxDepth=3", "--root", path("tmp")})
                            .run();
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ("explained G2\n", ended.out);
    EXPECT_EQ(kTwo, given("signatures"));
    EXPECT_EQ(path("tmp"), given("root"));
    expectSays(given("configuration"), "<Variable name=\"a\" value=\"&lt;\" guid=\"\"/>");
    expectSays(given("configuration"),
               "<Plugin name=\"FileSystem\"><Attribute name=\"maxDepth\" value=\"3\"/></Plugin>");
}

TEST_F(SoftwareTest, SignatureThatCannotBeExplainedIsReported) {
    const std::string one = file("one.xml", kOne);
    const Ended unknown = sw({"--explain", "other", one}).run();
    EXPECT_EQ(2, unknown.status);
    EXPECT_EQ("zav: no signature has the identifier other\n", unknown.err);
    const Ended crashed = sw({"--explain", "g1", one}, "crashes").run();
    EXPECT_EQ(1, crashed.status);
    expectSays(crashed.err, "quorvis cannot explain the signature: it ended with status 137");
}

TEST_F(SoftwareTest, PresetsAndSettingsReachTheScanner) {
    const std::string guid = "6f0d1c52-8f0e-4c39-9a55-0b5a3d1f0001";
    const Ended ended =
        sw({file("one.xml", kOne), "--variable", "a=<\"&gr\xc3\xb6\xc3\x9f", "--variable", "b=2@" + guid,
            "--config", "FileSystem.exclude=/a", "--config", "FileSystem.exclude=/b"})
            .run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ(
        "zav: warning: no signature uses the variable 'a'\n"
        "zav: warning: the signature " +
            guid + " does not use the variable 'b'\n",
        ended.err);
    for (const std::string part :
         {"name=\"a\" value=\"&lt;&quot;&amp;gr\xc3\xb6\xc3\x9f\" guid=\"\"",
          "name=\"b\" value=\"2\" guid=\"6f0d1c52-8f0e-4c39-9a55-0b5a3d1f0001\"",
          "<Plugin name=\"FileSystem\"", "name=\"exclude\" value=\"/a\"", "name=\"exclude\" value=\"/b\""})
        expectSays(given("configuration"), part);
}

TEST_F(SoftwareTest, PresetIdentifiersAreFoundInTheFiles) {
    sw({file("one.xml", kOne), "--variable", "a=1@G1", "--variable", "b=me@example.com"}).run();
    expectSays(given("configuration"), "name=\"a\" value=\"1\" guid=\"G1\"");
    expectSays(given("configuration"), "name=\"b\" value=\"me@example.com\" guid=\"\"");
}

TEST_F(SoftwareTest, GuidFilterIsCaseInsensitive) {
    const std::string prepared = file("prepared.xml", kResults);
    const Ended ended = sw({file("one.xml", kOne), "--guid", "g1", "--guid", "G1", "--format", "json"})
                            .environment("ZAVTEST_OUTPUT", prepared)
                            .run();
    EXPECT_EQ((Guids{"G1", "g1"}), guidsOf(ended));
    EXPECT_EQ("", ended.err);
}

TEST_F(SoftwareTest, GuidWithoutResultIsReportedAndSucceeds) {
    const std::string none = file("none.xml", "<MatchedSignatures/>");
    const Ended ended = sw({file("one.xml", kOne), "--guid", "G1", "--format", "json"})
                            .environment("ZAVTEST_OUTPUT", none)
                            .run();
    EXPECT_EQ(Guids{}, guidsOf(ended));
    EXPECT_EQ("zav: the signature G1 does not match\n", ended.err);
}

TEST_F(SoftwareTest, UnknownGuidIsBadUsage) {
    const Ended ended = sw({file("one.xml", kOne), "--guid", "G1", "--guid", "other"}).run();
    EXPECT_EQ(2, ended.status);
    EXPECT_EQ("", ended.out);
    EXPECT_EQ("zav: no signature has the identifier other\n", ended.err);
    EXPECT_TRUE(std::filesystem::is_empty(path("given")));
    const std::string bad = file("cut.xml", "<Signatures>\n<Bad/><Signature guid=\"g");
    expectSays(sw({bad, "--guid", "other"}).run().err, "the scanner refuses the signatures of " + bad);
}

TEST_F(SoftwareTest, UnusedVariablesAreReported) {
    const std::string uses = file("uses.xml",
                                  "<Signatures><Signature guid=\"g1\" name=\"${used}\"><Match>"
                                  "<File path=\"/a$${literal}\"/></Match></Signature>"
                                  "<Signature guid=\"g2\"><Preset name=\"own\"/></Signature></Signatures>");
    const Ended ended =
        sw({uses, "--variable", "used=1", "--variable", "own=2@g2", "--variable", "literal=3"}).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("zav: warning: no signature uses the variable 'literal'\n", ended.err);
    EXPECT_EQ("zav: warning: the signature g2 does not use the variable 'used'\n",
              sw({uses, "--variable", "used=1@g2"}).run().err);
}

TEST_F(SoftwareTest, FilesInWideEncodingsAreRefused) {
    const struct {
        std::string content;
        const char* encoding;
    } cases[] = {{std::string("\xff\xfe<\0S\0/\0>\0", 10), "UTF-16"},
                 {std::string("\0<\0S\0/\0>", 8), "UTF-16"},
                 {std::string("\xff\xfe\0\0<\0\0\0", 8), "UTF-32"},
                 {std::string("\0\0\0<\0\0\0S", 8), "UTF-32"}};
    for (const auto& [content, encoding] : cases) {
        const std::string wide = file("wide.xml", content);
        for (const Guids& arguments : {Guids{wide}, Guids{"--check", wide}}) {
            const Ended ended = sw(arguments).run();
            EXPECT_EQ(2, ended.status);
            EXPECT_EQ("zav: cannot read '" + wide + "': its encoding is " + encoding +
                          "; signature files must be UTF-8\n",
                      ended.err);
        }
    }
}

TEST_F(SoftwareTest, AmbiguousNameIsNotShown) {
    const std::string two = file("two.xml",
                                 "<Signatures><Signature guid=\"g1\" name=\"First\"/>"
                                 "<Signature guid=\"G1\" name=\"Second\"/></Signatures>");
    const std::string variable =
        file("variable.xml", "<Signatures><Signature guid=\"g3\" name=\"A ${x}\"/></Signatures>");
    const Ended ended = sw({two, variable, "--format", "json"}).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    const Json json = Json::parse(ended.out);
    for (const Json& result : json.at("results")) EXPECT_FALSE(result.contains("name")) << result;
}

TEST_F(SoftwareTest, NameEvaluatedByTheScannerIsPreferred) {
    const std::string prepared =
        file("prepared.xml",
             "<MatchedSignatures><MatchedSignature guid=\"g1\"><Metadata><Name>of the writer</Name>"
             "<MatchedName>forged</MatchedName><MatchedName>One 7</MatchedName></Metadata></MatchedSignature>"
             "</MatchedSignatures>");
    const Ended ended =
        sw({file("one.xml", kOne), "--format", "json"}).environment("ZAVTEST_OUTPUT", prepared).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    const Json result = Json::parse(ended.out).at("results").at(0);
    EXPECT_EQ("One 7", result.at("name"));
    EXPECT_EQ((Json{{"Name", "of the writer"}}), result.at("metadata"));
}

TEST_F(SoftwareTest, UndecidedSignaturesAreReportedInEveryFormat) {
    const std::string none = file("none.xml", "<MatchedSignatures/>");
    const std::string events =
        file("events.xml",
             "<Events><Event code=\"permission\" severity=\"warning\" guid=\"g1\" leaf=\"f\" "
             "path=\"/opt/x\" count=\"1\">No permission to search this directory</Event>"
             "<Event code=\"unresolved\" severity=\"warning\" guid=\"g1\" "
             "count=\"1\">whether the signature matches is unknown</Event></Events>");
    const auto run = [&](const char* format) {
        return sw({file("one.xml", kOne), "--guid", "g1", "--format", format})
            .environment("ZAVTEST_OUTPUT", none)
            .environment("ZAVTEST_WARNINGS", events)
            .run();
    };
    for (const char* format : {"table", "json", "csv", "xml"}) {
        EXPECT_EQ(3, run(format).status);
        EXPECT_EQ(
            "zav: warning: /opt/x: No permission to search this directory (signature g1, leaf f)\n"
            "zav: warning: whether the signature matches is unknown (signature g1)\n",
            run(format).err);
    }
    EXPECT_EQ("no matches; 1 signature in 1 file; 1 undecided; 1 warning\n", run("table").out);
    const Json json = Json::parse(run("json").out);
    EXPECT_EQ(false, json.at("complete"));
    EXPECT_EQ((Json::array({{{"guid", "g1"}, {"name", "One"}}})), json.at("undecided"));
    EXPECT_EQ("result,guid,name,variable,value\r\n,g1,One,_status,unknown\r\n", run("csv").out);
    expectSays(run("xml").out, "<MatchedSignatures complete=\"false\">");
}

TEST_F(SoftwareTest, UndecidedSignaturesWithOtherGuidsAreIgnored) {
    const std::string events = file("events.xml",
                                    "<Events><Event code=\"unresolved\" severity=\"warning\" guid=\"g2\" "
                                    "count=\"1\">whether the signature matches is unknown</Event></Events>");
    const Guids files{file("one.xml", kOne), file("two.xml", kTwo)};
    EXPECT_EQ(3, sw(files).environment("ZAVTEST_WARNINGS", events).run().status);
    EXPECT_EQ(0,
              sw({files[0], files[1], "--guid", "g1"}).environment("ZAVTEST_WARNINGS", events).run().status);
}

TEST_F(SoftwareTest, WarningsAreOnStandardErrorAndInJson) {
    const std::string events =
        file("events.xml",
             "<Events><Event code=\"permission\" severity=\"warning\" guid=\"g1\" leaf=\"f\" "
             "path=\"/gr&#246;&#223;\" count=\"3\">cannot be opened</Event></Events>");
    const Ended ended =
        sw({file("one.xml", kOne), "--format", "json"}).environment("ZAVTEST_WARNINGS", events).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("zav: warning: /gr\xc3\xb6\xc3\x9f: cannot be opened (signature g1, leaf f, 3 times)\n",
              ended.err);
    const Json json = Json::parse(ended.out);
    ASSERT_EQ(1U, json.at("warnings").size());
    EXPECT_EQ("/gr\xc3\xb6\xc3\x9f", json.at("warnings").at(0).at("path"));
}

TEST_F(SoftwareTest, ResultsAreShownIfTheWarningsAreInvalid) {
    const Ended ended =
        sw({file("one.xml", kOne)}).environment("ZAVTEST_WARNINGS", file("events.xml", "<Events>")).run();
    EXPECT_EQ(1, ended.status);
    expectSays(ended.out, "\nOne ");
    expectSays(ended.err, "zav: the software scanner wrote no valid list of warnings");
}

TEST_F(SoftwareTest, ScannersThatFailAreReported) {
    const std::string one = file("one.xml", kOne);
    expectSays(sw({one}, "crashes").run().err,
               "zav: signal 9 ended the scanner " + scanner("crashes") + "/quorvis\n");
    for (const char* format : {"table", "json", "csv", "xml"}) {
        const Ended ended = sw({one, "--format", format}, "cut_off").run();
        EXPECT_EQ(1, ended.status);
        EXPECT_EQ("", ended.out);
        expectSays(ended.err, "zav: the software scanner wrote no valid results");
    }
}

TEST_F(SoftwareTest, OutputGoesOnlyToTheFile) {
    const std::string one = file("one.xml", kOne);
    const Ended ended = sw({one, "--format", "csv", "--output", path("out.csv")}).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("", ended.out + ended.err);
    EXPECT_EQ((CsvRecord{"0", "g1", "One", "", ""}), readCsv(readAll(path("out.csv"))).at(1));
}

TEST_F(SoftwareTest, FormulasInCsvAreProtectedByDefault) {
    const std::string prepared = file("prepared.xml",
                                      "<MatchedSignatures><MatchedSignature guid=\"g1\"><Variable name=\"v\" "
                                      "value=\"=cmd()\"/></MatchedSignature></MatchedSignatures>");
    const auto run = [&](const Guids& arguments) {
        return sw(arguments).environment("ZAVTEST_OUTPUT", prepared).run().out;
    };
    const std::string one = file("one.xml", kOne);
    expectSays(run({one, "--format", "csv"}), "0,g1,One,v,'=cmd()\r\n");
    expectSays(run({one, "--format", "csv", "--csv-raw"}), "0,g1,One,v,=cmd()\r\n");
}

TEST_F(SoftwareTest, RootIsPassedToTheScannerAndRecorded) {
    const Ended ended = sw({file("one.xml", kOne), "--root", path("tmp"), "--format", "json"}).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(Json(path("tmp")), Json::parse(ended.out).at("scan").at("root"));
    EXPECT_EQ(path("tmp"), given("root"));
}

TEST_F(SoftwareTest, BadUsageExitsWithTwoWithoutARun) {
    const std::string one = file("one.xml", kOne);
    for (const auto& arguments :
         {Guids{path("none.xml")}, Guids{path("given")}, Guids{"/dev/null"}, Guids{one, "--variable", "x"},
          Guids{one, "--variable", "x=1", "--variable", "x=2"}, Guids{one, "--config", "x=1"},
          Guids{one, "--format", "toml"}, Guids{"--check", path("none.xml")}}) {
        const Ended ended = sw(arguments).run();
        EXPECT_EQ(2, ended.status);
        EXPECT_EQ("", ended.out);
        EXPECT_EQ(0U, ended.err.find("zav: ")) << ended.err;
    }
    EXPECT_TRUE(std::filesystem::is_empty(path("given")));
    EXPECT_EQ("zav: --toolkit: '" + scanner("copies") + "' contains no program 'quorvis'\n",
              sw({one}, "copies").run().err);
}

TEST_F(SoftwareTest, VerboseShowsTheScannerOutput) {
    const std::string bad = file("bad.xml", kBad);
    expectSays(sw({bad, "-vv"}).run().err, "SW_ExecuteScanner(): STDOUT data: [error: invalid: " + bad);
    expectSays(sw({bad, "-v"}).run().err, "zav: Exit code: 3 (ERROR)\n");
}

}  // namespace
}  // namespace zavtest
