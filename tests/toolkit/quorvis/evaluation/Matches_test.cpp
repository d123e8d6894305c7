#include "tests/toolkit/quorvis/EvaluationFixture.h"

namespace toolkit::quorvis {
namespace {

class Matches : public Evaluation {
  protected:
    static constexpr char kHomes[] = R"(<Each><Glob id="r" pattern="/opt/*/release"/></Each>)";
    static constexpr char kOutput[] = R"(<Output><Variable name="home" value="${r.dir}"/></Output>)";

    static std::vector<std::string> valuesOf(const std::vector<Match>& matches, const std::string& name) {
        std::vector<std::string> values;
        for (const Match& match : matches) {
            for (const auto& [variable, value] : match.variables) {
                if (variable == name) values.push_back(value);
            }
        }
        return values;
    }
};

TEST_F(Matches, EachGivesOneMatchPerItemInOrder) {
    tree_.write("opt/b/release", "");
    tree_.write("opt/a/release", "");
    const std::vector<Match> found = evaluateOne(std::string(kHomes) + kOutput);
    EXPECT_EQ(valuesOf(found, "home"), (std::vector<std::string>{"/opt/a", "/opt/b"}));
    for (const Match& match : found) EXPECT_EQ(match.guid, "g");
}

TEST_F(Matches, EachKeepsTheItemsForWhichTheConditionHolds) {
    tree_.write("opt/a/release", "");
    tree_.write("opt/b/release", "");
    tree_.write("opt/b/bin/javac", "");
    const std::vector<Match> found = evaluateOne(
        std::string(kHomes) + R"(<Match><File path="${r.dir}/bin/javac" kind="file"/></Match>)" + kOutput);
    EXPECT_EQ(valuesOf(found, "home"), (std::vector<std::string>{"/opt/b"}));
}

TEST_F(Matches, ABindingEndsWithItsItem) {
    tree_.write("opt/a/release", "");
    tree_.write("opt/a/bin/javac", "");
    tree_.write("opt/b/release", "");
    const std::vector<Match> found = evaluateOne(
        std::string(kHomes) +
        R"(<Match><Optional><File id="c" path="${r.dir}/bin/javac"/></Optional></Match>)"
        R"(<Output><Variable name="home" value="${r.dir}"/><Variable name="compiler" value="${c.path}"/></Output>)");
    EXPECT_EQ(valuesOf(found, "home"), (std::vector<std::string>{"/opt/a", "/opt/b"}));
    EXPECT_EQ(valuesOf(found, "compiler"), (std::vector<std::string>{"/opt/a/bin/javac"}));
}

TEST_F(Matches, TheSameFileUnderTwoPathsCountsOnceUnderThePathWithoutLinks) {
    tree_.write("opt/jdk-17/release", "");
    std::filesystem::create_directory_symlink("jdk-17", tree_.path() / "opt/default");
    EXPECT_EQ(valuesOf(evaluateOne(std::string(kHomes) + kOutput), "home"),
              (std::vector<std::string>{"/opt/jdk-17"}));
}

TEST_F(Matches, MatchesWithEqualOutputAreMerged) {
    tree_.write("opt/a/release", "");
    tree_.write("opt/b/release", "");
    const std::vector<Match> found =
        evaluateOne(std::string(kHomes) + R"(<Output><Variable name="x" value="same"/></Output>)");
    EXPECT_EQ(valuesOf(found, "x"), (std::vector<std::string>{"same"}));
}

TEST_F(Matches, EqualMatchesOfDifferentSignaturesAreNotMerged) {
    install("bash", "1");
    const std::string signature =
        R"(<Signature guid="g" name="n"><Match><Package name="bash"/></Match></Signature>)";
    EXPECT_EQ(evaluate(signature + signature).size(), 2U);
}

TEST_F(Matches, MatchesAreInTheOrderOfTheSignatures) {
    install("a", "1");
    install("b", "1");
    const std::vector<Match> found =
        evaluate(R"(<Signature guid="2" name="n"><Match><Package name="b"/></Match></Signature>
                    <Signature guid="1" name="n"><Match><Package name="a"/></Match></Signature>)");
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].guid, "2");
    EXPECT_EQ(found[1].guid, "1");
}

TEST_F(Matches, EvidenceNamesEachTrueLeaf) {
    install("bash", "5.2");
    tree_.write("bin/bash", "");
    const std::vector<Match> found = evaluateOne(
        R"(<Match><All><Not><Package name="gone"/></Not><Any><Package name="no"/><Package name="bash"/></Any>)"
        R"(<File path="/bin/bash"/></All></Match>)");
    ASSERT_EQ(found.size(), 1U);
    const std::vector<Evidence>& evidence = found.front().evidence;
    ASSERT_EQ(evidence.size(), 2U);
    EXPECT_EQ(evidence[0].kind, "package");
    EXPECT_EQ(evidence[0].source, "/var/lib/dpkg/status");
    EXPECT_EQ(evidence[0].name, "bash");
    EXPECT_EQ(evidence[0].version, "5.2");
    EXPECT_EQ(evidence[1].kind, "file");
    EXPECT_EQ(evidence[1].source, "/bin/bash");
}

TEST_F(Matches, EvidenceCanBeSwitchedOff) {
    install("bash", "5.2");
    settings_.evaluation.evidence = false;
    const std::vector<Match> found = evaluateOne(R"(<Match><Package name="bash"/></Match>)");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_TRUE(found.front().evidence.empty());
}

TEST_F(Matches, AtMostSixteenPiecesOfEvidenceAreKept) {
    std::string leaves;
    for (int i = 0; i < 20; ++i) {
        install("p" + std::to_string(i), "1");
        leaves += "<Package name=\"p" + std::to_string(i) + "\"/>";
    }
    const std::vector<Match> found = evaluateOne("<Match><All>" + leaves + "</All></Match>");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().evidence.size(), 16U);
}

TEST_F(Matches, AnUnknownItemDoesNotHideTheOthers) {
    tree_.write("opt/a/release", "");
    tree_.write("opt/b/release", "");
    tree_.write("opt/b/name", "x");
    const std::vector<Match> found = evaluateOne(
        std::string(kHomes) +
        R"(<Match><All><Optional><File id="n" path="${r.dir}/name"/></Optional><File path="${n.path}"/></All></Match>)" +
        kOutput);
    EXPECT_EQ(valuesOf(found, "home"), (std::vector<std::string>{"/opt/b"}));
    const std::vector<std::string> codes = eventCodes();
    EXPECT_EQ(std::count(codes.begin(), codes.end(), "unresolved"), 1);
}

}  // namespace
}  // namespace toolkit::quorvis
