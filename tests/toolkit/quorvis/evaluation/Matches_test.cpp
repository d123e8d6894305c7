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

class SeveralLeavesOfEach : public Matches {
  protected:
    SeveralLeavesOfEach() {
        tree_.write("opt/b/list", "x=1\nx=2\n");
        tree_.write("opt/a/list", "x=3\n");
        tree_.write("opt/c/list", "y=4\n");
    }

    static constexpr char kLines[] =
        R"(<Each><Glob id="f" pattern="/opt/*/list"/>)"
        R"(<Content id="l" path="${f.path}" regex="x=([0-9]) *"><Capture group="1" name="x"/></Content></Each>)";

    std::vector<std::string> found(const std::string& condition = {}) {
        const std::string match = condition.empty() ? condition : "<Match>" + condition + "</Match>";
        return valuesOf(
            evaluateOne(kLines + match + R"(<Output><Variable name="x" value="${f.dir} ${l.x}"/></Output>)"),
            "x");
    }
};

TEST_F(SeveralLeavesOfEach, GiveAMatchPerItemOfTheLastForEachItemBefore) {
    EXPECT_EQ(found(), (std::vector<std::string>{"/opt/a 3", "/opt/b 1", "/opt/b 2"}));
    EXPECT_TRUE(eventCodes().empty());
}

TEST_F(SeveralLeavesOfEach, HaveAConditionForEachCombination) {
    EXPECT_EQ(found(R"(<Not><Compare left="${l.x}" equals="1"/></Not>)"),
              (std::vector<std::string>{"/opt/a 3", "/opt/b 2"}));
}

TEST_F(SeveralLeavesOfEach, KeepNoBindingBeyondItsItem) {
    tree_.write("opt/a/name3", "");
    const std::vector<Match> matches =
        evaluateOne(std::string(kLines) +
                    R"(<Match><Optional><File id="n" path="${f.dir}/name${l.x}"/></Optional></Match>)"
                    R"(<Output><Variable name="x" value="${f.dir} ${l.x}"/>)"
                    R"(<Variable name="name" value="${n.path}"/></Output>)");
    EXPECT_EQ(valuesOf(matches, "x"), (std::vector<std::string>{"/opt/a 3", "/opt/b 1", "/opt/b 2"}));
    EXPECT_EQ(valuesOf(matches, "name"), (std::vector<std::string>{"/opt/a/name3"}));
}

TEST_F(SeveralLeavesOfEach, OneThatIsUnknownDoesNotHideTheOthers) {
    settings_.fileSystem.maxContentSize = 5;
    EXPECT_EQ(found(), (std::vector<std::string>{"/opt/a 3"})) << "the other list is larger";
    EXPECT_EQ(eventCodes(), (std::vector<std::string>{"limit-bytes", "unresolved"}));
}

TEST_F(SeveralLeavesOfEach, StayRightWhileTheirResultsAreForgotten) {
    // 40 lists of 16 lines, whose items have 3 MiB together.
    const std::string line(8000, 'x');
    for (int file = 0; file < 40; ++file) {
        std::string lines;
        for (int i = 0; i < 16; ++i) lines += std::to_string(10 + i) + line + "\n";
        tree_.write("srv/" + std::to_string(100 + file), lines);
    }
    std::string captures = R"(<Capture group="1" name="n"/>)";
    for (int i = 0; i < 24; ++i) captures += R"(<Capture group="0" name="c)" + std::to_string(i) + R"("/>)";
    const std::vector<Match> matches = evaluateOne(
        R"(<Each><Glob id="f" pattern="/srv/*"/><Content id="l" path="${f.path}" regex="([0-9]+)x+">)" +
        captures + R"(</Content></Each><Match><File id="m" path="${f.path}"/></Match>)" +
        R"(<Output><Variable name="x" value="${f.name} ${l.n} ${m.name}"/></Output>)");
    ASSERT_EQ(matches.size(), std::size_t{40} * 16);
    for (std::size_t i = 0; i < matches.size(); ++i) {
        const std::string file = std::to_string(100 + i / 16);
        EXPECT_EQ(matches[i].variables.at(0).second, file + " " + std::to_string(10 + i % 16) + " " + file);
    }
}

TEST_F(SeveralLeavesOfEach, AreExplainedInTurn) {
    explained_ = "g";
    found();
    const auto place = [this](const std::string& line) {
        return std::ranges::find(sink_.explanation, line) - sink_.explanation.begin();
    };
    const std::string leaf = R"(  Content path="/opt/b/list" regex="x=([0-9]) *", items found: 2: true)";
    const auto end = static_cast<std::ptrdiff_t>(sink_.explanation.size());
    ASSERT_LT(place(leaf), end);
    ASSERT_LT(place("  item /opt/b/list: true"), end);
    ASSERT_LT(place("item /opt/b/list: true"), end);
    EXPECT_LT(place(leaf), place("  item /opt/b/list: true"));
    EXPECT_LT(place("  item /opt/b/list: true"), place("item /opt/b/list: true"));
    EXPECT_LT(place("item /opt/c/list: false"), end);
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
