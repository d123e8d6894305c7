#include "cli/scan/Warnings.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

TEST(Warnings, AreDescribedInWords) {
    const struct {
        const char* xml;
        const char* text;
    } cases[] = {
        {R"(<Event code="permission" severity="warning" guid="G" leaf="f" path="/etc/x" count="1">cannot be read</Event>)",
         "warning: /etc/x: cannot be read (signature G, leaf f)"},
        {R"(<Event code="permission" count="17" guid="G">more such events</Event>)",
         "warning: more such events (signature G, 17 times)"},
        {R"(<Event code="loop" severity="info" path="/a">a loop</Event>)", "note: /a: a loop"},
        {R"(<Event path="/a">/a is too large</Event>)", "warning: /a is too large"},
        {R"(<Event code="io" path="/gr&#246;&#223;"/>)", "warning: /gr\xc3\xb6\xc3\x9f: io"},
        {R"(<Event>plain &lt;words&gt;</Event>)", "warning: plain <words>"},
        {"<Event><Odd/></Event>", "warning: <Event><Odd/></Event>"},
        {"no XML", "warning: no XML"},
    };
    for (const auto& [xml, text] : cases) EXPECT_EQ(text, warningText(readWarning(xml)));
}

TEST(Warnings, ThoseThatDifferOnlyInTheSignatureShareALine) {
    std::vector<Warning> warnings;
    for (const char* guid : {"A", "B", "A", "C", "D", "E", "F"}) {
        warnings.push_back(readWarning(
            std::string(R"(<Event code="permission" severity="warning" guid=")") + guid +
            R"(" leaf="f" path="/opt" count="1">No permission to search this directory</Event>)"));
    }
    warnings.push_back(
        readWarning(R"(<Event code="io" severity="warning" guid="A" path="/x" count="1">broken</Event>)"));
    warnings.push_back(
        readWarning(R"(<Event code="permission" guid="A" count="9">more such events were left out</Event>)"));
    EXPECT_EQ((std::vector<std::string>{
                  "warning: /opt: No permission to search this directory (6 signatures: A, B, C, D, E, ...)",
                  "warning: /x: broken (signature A)",
                  "warning: more such events were left out (signature A, 9 times)"}),
              warningLines(warnings));
    EXPECT_TRUE(warningLines({}).empty());
}

TEST(Warnings, ReportUndecidedSignaturesAndGaps) {
    const Warning undecided =
        readWarning(R"(<Event code="unresolved" severity="warning" guid="A" count="1">unknown</Event>)");
    const Warning limit =
        readWarning(R"(<Event code="deadline" severity="warning" count="1">out of time</Event>)");
    const Warning other = readWarning(R"(<Event code="permission" severity="warning" guid="A">no</Event>)");
    const std::vector<Undecided> found = undecidedSignatures({undecided, undecided, limit, other});
    ASSERT_EQ(1U, found.size());
    EXPECT_EQ("A", found.front().guid);
    EXPECT_TRUE(hasGaps({other, undecided}, {}));
    EXPECT_TRUE(hasGaps({undecided}, {"a"}));
    EXPECT_FALSE(hasGaps({undecided}, {"b"}));
    EXPECT_TRUE(hasGaps({limit}, {"b"}));
    EXPECT_FALSE(hasGaps({other}, {}));
}

TEST(Warnings, GapsCausedOnlyByMissingPermissionAreExpected) {
    const auto event = [](const std::string& code, const std::string& guid) {
        return readWarning("<Event code=\"" + code + "\" severity=\"warning\" guid=\"" + guid +
                           "\">x</Event>");
    };
    const Warning undecided = event("unresolved", "A");
    EXPECT_FALSE(hasUnexpectedGaps({event("permission", "A"), undecided}, {}));
    EXPECT_FALSE(hasUnexpectedGaps({event("denied", "a"), event("permission", "A"), undecided}, {}));
    EXPECT_TRUE(hasUnexpectedGaps({event("denied", "A"), undecided}, {"A"}));
    EXPECT_TRUE(hasUnexpectedGaps({event("denied", "A"), event("io", "A"), undecided}, {}));
    EXPECT_TRUE(hasUnexpectedGaps({event("denied", "B"), undecided}, {}));
    EXPECT_TRUE(hasUnexpectedGaps({event("denied", "A"), undecided, event("deadline", "")}, {}));
    EXPECT_FALSE(hasUnexpectedGaps({event("denied", "A")}, {}));
}

Warning ofFile(const std::string& code, const std::string& path, const std::string& text = "damaged") {
    return {{{"code", code}, {"guid", "A"}, {"path", path}, {"scope", "file"}, {"count", "1"}}, text};
}

TEST(Warnings, GapsOfSingleFilesAreExpected) {
    const Warning undecided = ofFile("unresolved", "");
    EXPECT_FALSE(hasUnexpectedGaps({ofFile("parse", "/a"), undecided}, {}));
    EXPECT_FALSE(hasUnexpectedGaps({ofFile("limit-bytes", "/a"), undecided}, {}));
    EXPECT_TRUE(hasUnexpectedGaps({ofFile("parse", "/a"), undecided}, {"A"})) << "the signature is asked for";
    EXPECT_TRUE(hasGaps({ofFile("parse", "/a"), undecided}, {}));
    const Warning whole{{{"code", "unresolved"}, {"guid", "A"}}, "unknown"};
    EXPECT_TRUE(hasUnexpectedGaps({ofFile("parse", "/a"), whole}, {}));
    const Warning denied{{{"code", "denied"}, {"guid", "A"}, {"path", "/x"}}, "private"};
    EXPECT_FALSE(hasUnexpectedGaps({ofFile("parse", "/a"), denied, whole}, {}));
}

TEST(Warnings, FilesThatWereNotReadInTimeAreCounted) {
    std::vector<Warning> warnings{{{{"code", "deadline"}}, "the time limit was reached"}};
    for (const char* path : {"/a", "/b", "/c", "/d", "/e"})
        warnings.push_back({{{"code", "deadline"}, {"guid", "A"}, {"path", path}}, "late"});
    EXPECT_EQ(
        (std::vector<std::string>{"warning: the time limit was reached", "warning: /a: late (signature A)",
                                  "warning: /b: late (signature A)", "warning: /c: late (signature A)",
                                  "warning: 2 more files could not be read or understood; -v names them"}),
        conciseWarningLines(warnings, "-v", true));
    EXPECT_TRUE(hasUnexpectedGaps(warnings, {}));
}

TEST(Warnings, OfManyDamagedFilesThreeAreNamed) {
    std::vector<Warning> warnings;
    for (const char* path : {"/d", "/b", "/a", "/c"}) warnings.push_back(ofFile("parse", path));
    warnings.push_back(ofFile("unresolved", "", "unknown"));
    EXPECT_EQ((std::vector<std::string>{
                  "warning: /d: damaged (signature A)", "warning: /b: damaged (signature A)",
                  "warning: /a: damaged (signature A)", "warning: /c: damaged (signature A)"}),
              conciseWarningLines(warnings, "-v", true));
    warnings.push_back(ofFile("io", "/e"));
    warnings.push_back({{{"code", "parse"}, {"guid", "A"}, {"scope", "file"}, {"count", "480"}}, "more"});
    EXPECT_EQ(
        (std::vector<std::string>{"warning: /d: damaged (signature A)", "warning: /b: damaged (signature A)",
                                  "warning: /a: damaged (signature A)",
                                  "warning: 482 more files could not be read or understood; -v names them"}),
        conciseWarningLines(warnings, "-v", true));
}

TEST(Warnings, LongOnesAreNotShortened) {
    const std::string words(20'000, 'x');
    EXPECT_EQ("warning: " + words, warningText(readWarning("<Event>" + words + "</Event>")));
}

TEST(Warnings, ManyPrivatePlacesShareALine) {
    std::vector<Warning> warnings;
    for (const char* path : {"/a", "/b", "/c"}) {
        for (const char* guid : {"g1", "g2"})
            warnings.push_back({{{"code", "denied"}, {"path", path}, {"guid", guid}}, "private"});
    }
    warnings.push_back({{{"code", "unresolved"}, {"guid", "g1"}}, "unknown"});
    warnings.push_back({{{"code", "io"}, {"path", "/x"}}, "cannot be read"});
    EXPECT_EQ(warningLines(warnings), conciseWarningLines(warnings, "-v", true)) << "three places are named";
    warnings.push_back({{{"code", "permission"}, {"path", "/d"}, {"guid", "g1"}}, "private"});
    EXPECT_EQ((std::vector<std::string>{"warning: /x: cannot be read",
                                        "warning: 4 files and directories may not be read or searched, so 1 "
                                        "signature is undecided; -v names them"}),
              conciseWarningLines(warnings, "-v", true));
}

Warning privatePlace(const std::string& path, const std::string& code = "permission",
                     const std::string& count = "1") {
    return {{{"code", code}, {"path", path}, {"count", count}}, "private"};
}

Warning unresolved(const std::string& guid, const std::string& because) {
    return {{{"code", "unresolved"}, {"guid", guid}, {"because", because}}, "unknown"};
}

TEST(Warnings, OtherUsersThanRootAreToldThatRootMayReadMore) {
    std::vector<Warning> warnings;
    for (const char* path : {"/a", "/b", "/c", "/d"}) warnings.push_back(privatePlace(path, "denied"));
    const std::string counted = "warning: 4 files and directories may not be read or searched";
    EXPECT_EQ(counted + "; -v names them", conciseWarningLines(warnings, "-v", false).back())
        << "root sees no more of what signatures may not see";
    warnings.push_back(privatePlace("/d"));
    EXPECT_EQ(counted + "; root may read them; -v names them",
              conciseWarningLines(warnings, "-v", false).back());
    EXPECT_EQ(counted + "; -v names them", conciseWarningLines(warnings, "-v", true).back());
}

TEST(Warnings, PrivatePlacesThatTheScannerOnlyCountsAreCounted) {
    std::vector<Warning> warnings{privatePlace("", "permission", "7000")};
    for (const char* path : {"/a", "/b", "/c"}) warnings.push_back(privatePlace(path));
    EXPECT_EQ((std::vector<std::string>{
                  "warning: 7003 files and directories may not be read or searched; -v names them"}),
              conciseWarningLines(warnings, "-v", true));
}

TEST(Warnings, SignaturesThatAreUndecidedForAnotherReasonAreNamedBesidePrivatePlaces) {
    std::vector<Warning> warnings;
    for (const char* path : {"/a", "/b", "/c", "/d"}) warnings.push_back(privatePlace(path));
    for (const char* guid : {"g1", "g2", "g3"}) warnings.push_back(unresolved(guid, "permission"));
    EXPECT_FALSE(hasUnexpectedGaps(warnings, {}));
    EXPECT_TRUE(hasUnexpectedGaps(warnings, {"g1"})) << "the signature is asked for";
    warnings.push_back(unresolved("g4", "permission io"));
    EXPECT_EQ((std::vector<std::string>{
                  "warning: unknown, because of permission io (signature g4)",
                  "warning: 4 files and directories may not be read or searched, so 3 signatures are "
                  "undecided; -v names them"}),
              conciseWarningLines(warnings, "-v", true));
    EXPECT_TRUE(hasUnexpectedGaps(warnings, {}));
}

TEST(Warnings, AllUndecidedSignaturesAreNamedOnRequest) {
    std::vector<Warning> warnings;
    for (const char* guid : {"A", "B", "C", "D", "E", "F", "G"})
        warnings.push_back(unresolved(guid, "permission"));
    EXPECT_EQ("warning: unknown, because of permission (7 signatures: A, B, C, D, E, ...)",
              warningLines(warnings).at(0));
    EXPECT_EQ("warning: unknown, because of permission (7 signatures: A, B, C, D, E, F, G)",
              warningLines(warnings, Naming::AllUndecided).at(0));
}

}  // namespace
}  // namespace zavcli
