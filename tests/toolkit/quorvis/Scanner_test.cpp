// Runs the scanner as a process: its status, messages and output files.
#include <gtest/gtest.h>

#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/Program.h"
#include "tests/support/RefusedCall.h"

using zavtest::Finished;
using zavtest::readAll;
namespace fs = std::filesystem;

namespace {

constexpr char kBash[] = R"(<Signature guid="b" name="Bash"><Match><Package id="p" name="bash"/></Match>)"
                         R"(<Output><Variable name="version" value="${p.version}"/></Output></Signature>)";

class Scanner : public testing::Test {
  protected:
    void SetUp() override {
        tree_.write(
            "var/lib/dpkg/status",
            "Package: bash\nStatus: install ok installed\nArchitecture: amd64\nVersion: 5.2.15-2+b8\n\n");
        configure("");
    }
    void configure(const std::string& content) {
        config_ =
            dir_.write("config.xml", "<QEL><ZAV><XSE version=\"1.0\">" + content + "</XSE></ZAV></QEL>");
    }
    Finished scan(const std::string& signatures, const std::vector<std::string>& more = {}) {
        return scanFile(dir_.write("sig.xml", signatures).string(), more);
    }
    Finished scanFile(const std::string& signatures, const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments = {"-c",     config_.string(),     "-o", out(),
                                              "-e",     warnings(),           "-i", signatures,
                                              "--root", tree_.path().string()};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return zavtest::runProgram(QUORVIS_PROGRAM, arguments);
    }
    static std::string whole(const std::string& signatures) {
        return "<Signatures>" + signatures + "</Signatures>";
    }
    std::string out() const { return (dir_.path() / "out.xml").string(); }
    std::string warnings() const { return (dir_.path() / "warnings.xml").string(); }

    zavtest::ScratchDir dir_;
    zavtest::ScratchDir tree_;
    fs::path config_;
};

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

}  // namespace

TEST_F(Scanner, ProgressIsPrintedOnlyOnRequest) {
    EXPECT_FALSE(contains(scan(whole(kBash)).output, "progress"));
    configure(R"(<Plugin name="Evaluation"><Attribute name="progress" value="true"/></Plugin>)");
    EXPECT_TRUE(contains(scan(whole(kBash)).output, "progress: 100 percent\n"));
}

TEST_F(Scanner, ProgressIncreasesFromTheWalkToTheEnd) {
    for (int i = 0; i < 300; ++i) tree_.write("opt/d" + std::to_string(i) + "/e/f", "x");
    configure(R"(<Plugin name="Evaluation"><Attribute name="progress" value="true"/></Plugin>)");
    const Finished run = scan(whole(R"(<Signature guid="a" name="${f.path}"><Each>)"
                                    R"(<Glob id="f" pattern="/opt/**/f"/></Each></Signature>)"));
    std::vector<int> percents;
    std::istringstream lines(run.output);
    for (std::string line; std::getline(lines, line);) {
        int percent = -1;
        if (std::sscanf(line.c_str(), "progress: %d percent", &percent) == 1) percents.push_back(percent);
    }
    ASSERT_FALSE(percents.empty()) << run.output;
    EXPECT_TRUE(std::ranges::is_sorted(percents, std::less_equal())) << run.output;
    EXPECT_GE(percents.front(), 0);
    EXPECT_EQ(percents.back(), 100);
}

TEST_F(Scanner, WritesWhatMatchedAndEmptyWarnings) {
    const Finished run = scan(whole(kBash));
    EXPECT_EQ(run.status, 0) << run.errors;
    const std::string output = readAll(out());
    EXPECT_TRUE(contains(output, R"(<MatchedSignature guid="b" name="Bash">)")) << output;
    EXPECT_TRUE(contains(output, R"(<Variable name="version" value="5.2.15-2+b8"/>)")) << output;
    EXPECT_TRUE(contains(
        output,
        R"(<Evidence kind="package" source="/var/lib/dpkg/status" name="bash" version="5.2.15-2+b8"/>)"))
        << output;
    EXPECT_TRUE(contains(readAll(warnings()), "<Events>\n</Events>")) << readAll(warnings());
    EXPECT_EQ(run.output, "signatures: 1, matches: 1\n");
    EXPECT_EQ(run.errors, "");
}

TEST_F(Scanner, ExitsWithZeroWithoutMatches) {
    EXPECT_EQ(scan(whole("")).status, 0);
    EXPECT_TRUE(contains(readAll(out()), "complete=\"true\""));
}

TEST_F(Scanner, SecondRunWritesTheSameBytes) {
    scan(whole(kBash));
    const std::string first = readAll(out());
    scan(whole(kBash));
    EXPECT_EQ(readAll(out()), first);
}

TEST_F(Scanner, ExitsWithThreeForInvalidSignaturesAndWritesBothFiles) {
    const Finished run = scan(
        "<Signatures>\n <Signature guid=\"b\" name=\"x\"><Match><Packet "
        "name=\"y\"/></Match></Signature>\n</Signatures>");
    EXPECT_EQ(run.status, 3);
    EXPECT_TRUE(contains(readAll(out()),
                         "<MatchedSignatures language=\"1\" complete=\"true\">\n</MatchedSignatures>"))
        << readAll(out());
    const std::string events = readAll(warnings());
    EXPECT_TRUE(contains(events, "<Event code=\"invalid\" severity=\"error\"")) << events;
    EXPECT_TRUE(contains(events, "sig.xml:2:")) << events;
    EXPECT_TRUE(contains(run.output, "sig.xml:2:")) << run.output;
    EXPECT_EQ(events.find("<Event "), events.rfind("<Event ")) << events;
}

TEST_F(Scanner, ExitsWithThreeForAMissingSignaturesFile) {
    EXPECT_EQ(scanFile((dir_.path() / "none.xml").string()).status, 3);
    EXPECT_TRUE(contains(readAll(out()), "</MatchedSignatures>"));
    EXPECT_TRUE(contains(readAll(warnings()), "none.xml"));
}

TEST_F(Scanner, ExitsWithTwoForAnUnreadableConfiguration) {
    fs::remove(config_);
    const Finished run = scan(whole(kBash));
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(contains(run.errors, "config.xml")) << run.errors;
    EXPECT_FALSE(fs::exists(out()));
}

TEST_F(Scanner, ExitsWithTwoForABadCommandLine) {
    const Finished run = scan(whole(kBash), {"--what"});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(contains(run.errors, "--what")) << run.errors;
}

TEST_F(Scanner, ExitsWithTwoIfTheRootIsNotADirectory) {
    const Finished run = scan(whole(kBash), {"--root", "/nonexistent"});
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(contains(run.errors, "/nonexistent")) << run.errors;
}

TEST_F(Scanner, ExitsWithOneForUnwritableOutputAndLeavesNoPartialFile) {
    fs::create_directory(out());
    const Finished run = scan(whole(kBash));
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(contains(run.errors, "out.xml")) << run.errors;
    EXPECT_TRUE(fs::is_empty(out()));
}

TEST_F(Scanner, CommandLineOverridesTheRootSetting) {
    const zavtest::ScratchDir other;
    configure("<Plugins><Plugin name=\"FileSystem\"><Attribute name=\"root\" value=\"" +
              other.path().string() + "\"/></Plugin></Plugins>");
    scan(whole(kBash));
    EXPECT_TRUE(contains(readAll(out()), "guid=\"b\""));
    const std::string signatures = dir_.write("sig.xml", whole(kBash)).string();
    const Finished run = zavtest::runProgram(
        QUORVIS_PROGRAM, {"-c", config_.string(), "-o", out(), "-e", warnings(), "-i", signatures});
    EXPECT_EQ(run.status, 0);
    EXPECT_FALSE(contains(readAll(out()), "guid=\"b\""));
}

TEST_F(Scanner, PresetVariablesTakeEffect) {
    configure(R"(<PresetVariables><Variable name="wanted" value="bash" guid="" /></PresetVariables>)");
    scan(whole(R"(<Signature guid="v" name="n"><Match><Package name="${wanted}"/></Match></Signature>)"));
    EXPECT_TRUE(contains(readAll(out()), "guid=\"v\""));
}

TEST_F(Scanner, UnknownSettingIsAnEvent) {
    configure(R"(<Plugins><Plugin name="Nothing"><Attribute name="a" value="b"/></Plugin></Plugins>)");
    const Finished run = scan(whole(kBash));
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(contains(readAll(warnings()), "code=\"config\"")) << readAll(warnings());
    EXPECT_TRUE(contains(run.output, "Nothing")) << run.output;
}

TEST_F(Scanner, SetsItsOwnVariables) {
    scan(whole(
        R"(<Signature guid="v" name="${quorvis.root} ${quorvis.arch}"><Match><Package name="bash"/></Match></Signature>)"));
    EXPECT_TRUE(contains(readAll(out()), "name=\"" + tree_.path().string() + " ")) << readAll(out());
}

TEST_F(Scanner, OutputIsMarkedIncompleteAfterALimit) {
    for (int i = 0; i < 5; ++i) tree_.write("opt/x" + std::to_string(i), "");
    configure(
        R"(<Plugins><Plugin name="FileSystem"><Attribute name="maxEntriesPerDirectory" value="2"/></Plugin></Plugins>)");
    EXPECT_EQ(
        scan(
            whole(
                R"(<Signature guid="v" name="n"><Match><Glob pattern="/opt/*" min="9"/></Match></Signature>)"))
            .status,
        0);
    EXPECT_TRUE(contains(readAll(out()), "complete=\"false\"")) << readAll(out());
}

TEST_F(Scanner, ExplainPrintsTheConditions) {
    const Finished run = scan(whole(kBash), {"--explain", "b"});
    EXPECT_EQ(run.output,
              "  Package name=\"bash\", items found: 1: true\nsignature: true\nsignatures: 1, matches: 1\n");
}

TEST_F(Scanner, CheckAcceptsAValidFileAndWritesNothing) {
    const std::string file = dir_.write("sig.xml", whole(kBash)).string();
    const Finished run = zavtest::runProgram(QUORVIS_PROGRAM, {"--check", "-i", file});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, file + ": valid, signatures: 1\n");
    EXPECT_FALSE(fs::exists(out()));
}

TEST_F(Scanner, CheckAcceptsPatternsThatAScanMustAllow) {
    const std::string signatures =
        "<Signatures><Signature guid=\"w\" name=\"x\"><Match><Glob "
        "pattern=\"/**/x\"/></Match></Signature></Signatures>";
    const std::string file = dir_.write("sig.xml", signatures).string();
    const Finished run = zavtest::runProgram(QUORVIS_PROGRAM, {"--check", "-i", file});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.output, file + ": valid, signatures: 1\n");
    EXPECT_EQ(scan(signatures).status, 3);
}

TEST_F(Scanner, CheckReportsEveryMistakeWithItsLine) {
    const std::string file = dir_.write("sig.xml",
                                        "<Signatures>\n<Signature guid=\"a b\" name=\"x\"><Match><Package "
                                        "name=\"y\"/></Match></Signature>\n<Signature guid=\"c\" "
                                        "name=\"x\"><Match><Package/></Match></Signature>\n</Signatures>")
                                 .string();
    const Finished run = zavtest::runProgram(QUORVIS_PROGRAM, {"--check", "-i", file});
    EXPECT_EQ(run.status, 3);
    EXPECT_TRUE(contains(run.output, file + ":2:")) << run.output;
    EXPECT_TRUE(contains(run.output, file + ":3:")) << run.output;
}

TEST_F(Scanner, CheckWarnsOfWildcardsThatAScanComparesLiterally) {
    const std::string signatures =
        "<Signatures>\n<Signature guid=\"w\" name=\"x\"><Match>\n<File "
        "path=\"/opt/*/f\"/></Match></Signature>\n"
        "</Signatures>";
    const std::string file = dir_.write("sig.xml", signatures).string();
    const Finished run = zavtest::runProgram(QUORVIS_PROGRAM, {"--check", "-i", file});
    EXPECT_EQ(run.status, 0) << "there may be such a file";
    EXPECT_EQ(run.output,
              file +
                  ":3:1: path \"/opt/*/f\" contains a wildcard, but is compared literally; Glob finds "
                  "by patterns (warning)\n" +
                  file + ": valid, signatures: 1\n");
    tree_.write("opt/a/f", "");
    EXPECT_EQ(scan(signatures).output, "signatures: 1, matches: 0\n");
    tree_.write("opt/*/f", "");
    EXPECT_EQ(scan(signatures).output, "signatures: 1, matches: 1\n");
    EXPECT_TRUE(contains(readAll(warnings()), "<Events>\n</Events>")) << readAll(warnings());
}

TEST_F(Scanner, HelpAndVersionGoToStandardOutput) {
    EXPECT_TRUE(contains(zavtest::runProgram(QUORVIS_PROGRAM, {"--help"}).output, "Usage: quorvis"));
    EXPECT_TRUE(contains(zavtest::runProgram(QUORVIS_PROGRAM, {"--version"}).output, "quorvis "));
}

TEST_F(Scanner, IncompleteSandboxPreventsTheScanUnlessConfigured) {
    struct Case {
        long call;
        const char* missing;
    };
    std::vector<Case> cases = {{SYS_prctl, "ban on new privileges"}};
#ifndef ZAV_SANITIZED
    // Sanitizers query limits themselves.
    cases.push_back({SYS_prlimit64, "limit of file sizes, ban on core dumps"});
#endif
    if (geteuid() == 0) cases.push_back({SYS_capset, "dropping of capabilities"});
    for (const Case& one : cases) {
        for (const int error : {EPERM, ENOSYS}) {
            configure("");
            EXPECT_EQ(1, zavtest::whereRefused(one.call, error, [&] { return scan(whole(kBash)).status; }))
                << one.missing;
            EXPECT_TRUE(contains(readAll(warnings()), "<Event code=\"sandbox\" severity=\"error\""))
                << readAll(warnings());
            EXPECT_TRUE(contains(readAll(warnings()), one.missing)) << readAll(warnings());
            EXPECT_TRUE(contains(readAll(out()), "complete=\"false\"")) << readAll(out());
            EXPECT_FALSE(contains(readAll(out()), "guid=")) << readAll(out());
            configure("<Plugin name=\"Sandbox\"><Attribute name=\"required\" value=\"no\"/></Plugin>");
            EXPECT_EQ(0, zavtest::whereRefused(one.call, error, [&] { return scan(whole(kBash)).status; }))
                << one.missing;
            EXPECT_TRUE(contains(readAll(warnings()), one.missing)) << readAll(warnings());
            EXPECT_TRUE(contains(readAll(out()), "guid=\"b\"")) << readAll(out());
        }
    }
}

TEST_F(Scanner, RefusesMillionsOfEmptyElementsWithoutUsingMemory) {
    std::string elements;
    for (int i = 0; i < 2'000'000; ++i) elements += "<a/>";
    const Finished nested =
        scan(whole("<Signature guid=\"b\" name=\"x\"><Metadata>" + elements + "</Metadata></Signature>"));
    EXPECT_EQ(nested.status, 3);
    EXPECT_TRUE(contains(nested.output, "more than 10000 elements and texts in one element"))
        << nested.output;
    elements.resize(1'200'000);
    EXPECT_EQ(scan(whole(elements)).status, 3);
    configure(elements +
              "<Plugin name=\"Evaluation\"><Attribute name=\"onInvalid\" value=\"skip\"/></Plugin>");
    EXPECT_EQ(scan(whole(elements)).status, 3);
    configure(std::string(2'000, '<').append("x"));
    EXPECT_EQ(scan(whole(kBash)).status, 0) << "what is no XML is read line by line";
    std::string variables;
    for (int i = 0; i < 100'001; ++i) variables += "<Variable name=\"a\" value=\"b\" guid=\"\"/>";
    configure(variables);
    EXPECT_EQ(scan(whole(kBash)).status, 2);
}
