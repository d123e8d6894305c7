#include "tests/toolkit/quorvis/EvaluationFixture.h"

namespace toolkit::quorvis {
namespace {

class Detections : public Evaluation {
  protected:
    // "a=1, b=2": the output of all matches, in order.
    static std::string outputOf(const std::vector<Match>& matches) {
        std::string text;
        for (const Match& match : matches) {
            for (const auto& [name, value] : match.variables)
                text.append(text.empty() ? "" : ", ").append(name).append("=").append(value);
        }
        return text;
    }

    static constexpr char kByFile[] =
        R"(<Detection><Each><Glob id="f" pattern="/opt/*/app"/></Each>)"
        R"(<Output><Variable name="path" value="${f.path}"/></Output></Detection>)";
    static constexpr char kByPackage[] =
        R"(<Detection><Match><Package id="p" name="app"/></Match>)"
        R"(<Output><Variable name="version" value="${p.version}"/></Output></Detection>)";
};

TEST_F(Detections, AllOfThemAreEvaluatedInTheirOrder) {
    install("app", "1.2");
    tree_.write("opt/a/app", "");
    tree_.write("opt/b/app", "");
    const std::vector<Match> found = evaluateOne(std::string(kByFile) + kByPackage);
    EXPECT_EQ(outputOf(found), "path=/opt/a/app, path=/opt/b/app, version=1.2");
    for (const Match& match : found) EXPECT_EQ(match.guid, "g");
    EXPECT_EQ(outputOf(evaluateOne(std::string(kByPackage) + kByFile)),
              "version=1.2, path=/opt/a/app, path=/opt/b/app");
}

TEST_F(Detections, OneThatFindsNothingDoesNotHideTheOthers) {
    install("app", "1.2");
    EXPECT_EQ(outputOf(evaluateOne(std::string(kByFile) + kByPackage)), "version=1.2");
}

TEST_F(Detections, EqualResultsOfSeveralAreMerged) {
    tree_.write("opt/a/app", "");
    EXPECT_EQ(outputOf(evaluateOne(std::string(kByFile) + kByFile)), "path=/opt/a/app");
}

TEST_F(Detections, EachHasIdentifiersOfItsOwn) {
    tree_.write("opt/a/app", "");
    tree_.write("srv/tool", "");
    const std::string other = R"(<Detection><Match><File id="f" path="/srv/tool"/></Match>)"
                              R"(<Output><Variable name="path" value="${f.path}"/></Output></Detection>)";
    EXPECT_EQ(outputOf(evaluateOne(kByFile + other)), "path=/opt/a/app, path=/srv/tool");
}

TEST_F(Detections, AValueOfAnotherOneIsNotVisible) {
    tree_.write("opt/a/app", "");
    tree_.write("srv/tool", "");
    const std::string other =
        R"(<Detection><Match><File path="/srv/tool"/></Match>)"
        R"(<Output><Variable name="of" value="tool"/><Variable name="path" value="${f.path}"/></Output></Detection>)";
    EXPECT_EQ(outputOf(evaluateOne(kByFile + other)), "path=/opt/a/app, of=tool");
}

TEST_F(Detections, AnUnknownOneIsReportedOnceBesideTheMatchesOfTheOthers) {
    install("app", "1.2");
    const std::string unknown = R"(<Detection><Match><File path="${nothing}"/></Match></Detection>)";
    EXPECT_EQ(outputOf(evaluateOne(unknown + unknown + kByPackage)), "version=1.2");
    EXPECT_EQ(eventCodes(),
              (std::vector<std::string>{"undefined-variable", "undefined-variable", "unresolved"}));
}

TEST_F(Detections, FillTheIdentityOfTheSignature) {
    install("app", "1:1.2-3");
    tree_.write("opt/a/app", "");
    const std::vector<Match> found = evaluateOne(
        "<Metadata><Home>x</Home><Cpe>cpe:2.3:a:maker:app:${version}:*:*:*:*:*:*:*</Cpe>"
        "<Purl>pkg:generic/app@${p.version}</Purl><Cpe>cpe:2.3:a:maker:fixed:1:*:*:*:*:*:*:*</Cpe></"
        "Metadata>" +
        std::string(kByFile) + kByPackage);
    ASSERT_EQ(2U, found.size());
    EXPECT_EQ("<Home>x</Home><Cpe>cpe:2.3:a:maker:fixed:1:*:*:*:*:*:*:*</Cpe>", found[0].metadata);
    EXPECT_EQ((Variables{{"Cpe", "cpe:2.3:a:maker:app:*:*:*:*:*:*:*:*"}}), found[0].identities);
    EXPECT_EQ((Variables{{"Cpe", "cpe:2.3:a:maker:app:1\\:1.2-3:*:*:*:*:*:*:*"},
                         {"Purl", "pkg:generic/app@1:1.2-3"}}),
              found[1].identities);
}

TEST_F(Detections, EachOneIsExplained) {
    explained_ = "g";
    install("app", "1.2");
    evaluateOne(std::string(kByFile) + "\n" + kByPackage);
    const auto& lines = sink_.explanation;
    EXPECT_NE(std::ranges::find(lines, "Detection in line 1: false"), lines.end());
    EXPECT_NE(std::ranges::find(lines, "Detection in line 2: true"), lines.end());
}

TEST_F(Detections, ARepeatedEvaluationReportsOnlyWhatIsNew) {
    install("app", "1.2");
    tree_.write("opt/a/app", "");
    tree_.write("opt/b/app", "");
    const std::string broken = R"(<Detection><Match><File path="/opt/b/app"/></Match></Detection>)";
    const std::string more = kByFile + broken + kByPackage + kByFile;
    EXPECT_EQ(4U, evaluateOne(more).size());
    EXPECT_EQ(outputOf(resumeAfter({1})), "version=1.2");
    EXPECT_EQ(outputOf(resumeAfter({0})), "version=1.2, path=/opt/a/app, path=/opt/b/app");
    EXPECT_EQ(eventCodes(), (std::vector<std::string>{"unresolved", "unresolved"}));
}

}  // namespace
}  // namespace toolkit::quorvis
