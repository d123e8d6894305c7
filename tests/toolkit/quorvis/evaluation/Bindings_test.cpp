#include "tests/toolkit/quorvis/EvaluationFixture.h"

namespace toolkit::quorvis {
namespace {

class Bindings : public Evaluation {
  protected:
    // The output of the only match of a signature with this condition.
    Variables output(const std::string& condition, const std::string& variables,
                     const std::string& before = {}) {
        const std::vector<Match> found =
            evaluateOne(before + "<Match>" + condition + "</Match><Output>" + variables + "</Output>");
        if (found.size() != 1) {
            ADD_FAILURE() << found.size() << " matches";
            return {};
        }
        return found.front().variables;
    }

    void SetUp() override {
        install("bash", "5.2.15-2+b8");
        install("zsh", "5.9-4");
    }
};

TEST_F(Bindings, ALeafsValuesReachTheOutput) {
    EXPECT_EQ(
        output(
            R"(<Package id="p" name="bash"/>)",
            R"(<Variable name="version" value="${p.version}"/><Variable name="text" value="v${p.upstream}!"/>)"),
        (Variables{{"version", "5.2.15-2+b8"}, {"text", "v5.2.15!"}}));
}

TEST_F(Bindings, ALeafsValuesReachLaterSiblings) {
    tree_.write("opt/bash/5.2.15", "");
    EXPECT_EQ(
        output(
            R"(<All><Package id="p" name="bash"/><File id="f" path="/opt/${p.name}/${p.upstream}"/></All>)",
            R"(<Variable name="file" value="${f.name}"/>)"),
        (Variables{{"file", "5.2.15"}}));
}

TEST_F(Bindings, AnyBindsTheItemsOfItsFirstTrueBranch) {
    EXPECT_EQ(
        output(
            R"(<Any><Package id="p" name="gone"/><Package id="p" name="zsh"/><Package id="p" name="bash"/></Any>)",
            R"(<Variable name="n" value="${p.name}"/>)"),
        (Variables{{"n", "zsh"}}));
}

TEST_F(Bindings, AFalseBranchBindsNothing) {
    EXPECT_EQ(
        output(
            R"(<Any><All><Package id="q" name="bash"/><Package name="gone"/></All><Package name="zsh"/></Any>)",
            R"(<Variable name="n" value="${q.name}"/><Variable name="k" value="k"/>)"),
        (Variables{{"k", "k"}}));
}

TEST_F(Bindings, ANotBindsNothing) {
    EXPECT_EQ(
        output(R"(<All><Not><All><Package id="p" name="bash"/><Package name="gone"/></All></Not></All>)",
               R"(<Variable name="n" value="${p.name}"/>)"),
        Variables());
}

TEST_F(Bindings, AnOptionalBindsItsItems) {
    EXPECT_EQ(output(R"(<All><Package name="bash"/><Optional><Package id="o" name="zsh"/></Optional></All>)",
                     R"(<Variable name="o" value="${o.version}"/>)"),
              (Variables{{"o", "5.9-4"}}));
}

TEST_F(Bindings, AnOutputOfAnOptionalWithoutItemsIsOmittedSilently) {
    EXPECT_EQ(output(R"(<All><Package name="bash"/><Optional><Package id="o" name="gone"/></Optional></All>)",
                     R"(<Variable name="o" value="${o.version}"/>)"),
              Variables());
    EXPECT_TRUE(eventCodes().empty());
}

TEST_F(Bindings, AnOutputWithoutAValueIsOmittedAndReported) {
    EXPECT_EQ(output(R"(<Package name="bash"/>)", R"(<Variable name="o" value="${nothing}"/>)"), Variables());
    EXPECT_EQ(eventCodes(), std::vector<std::string>{"undefined-variable"});
}

TEST_F(Bindings, PresetsComeFromThisSignatureThenFromAllThenFromTheDefault) {
    const std::string preset = R"(<Preset name="x" default="fallback"/>)";
    const std::string variable = R"(<Variable name="x" value="${x}"/>)";
    const std::string condition = R"(<Package name="bash"/>)";
    EXPECT_EQ(output(condition, variable, preset), (Variables{{"x", "fallback"}}));
    given_ = {{"x", "all", ""}, {"x", "other", "h"}};
    EXPECT_EQ(output(condition, variable, preset), (Variables{{"x", "all"}}));
    given_.push_back({"x", "own", "G"});
    EXPECT_EQ(output(condition, variable, preset), (Variables{{"x", "own"}}));
}

TEST_F(Bindings, AnEmptyPresetIsAValue) {
    given_ = {{"x", "", ""}};
    EXPECT_EQ(output(R"(<Package name="bash"/>)", R"(<Variable name="x" value="[${x}]"/>)"),
              (Variables{{"x", "[]"}}));
}

TEST_F(Bindings, VariableNamesAreCaseSensitive) {
    given_ = {{"X", "1", ""}};
    EXPECT_EQ(output(R"(<Package name="bash"/>)", R"(<Variable name="x" value="${x}"/>)"), Variables());
}

TEST_F(Bindings, ABoundValueComesBeforeAPreset) {
    given_ = {{"p.version", "preset", ""}};
    EXPECT_EQ(output(R"(<Package id="p" name="bash"/>)", R"(<Variable name="v" value="${p.version}"/>)"),
              (Variables{{"v", "5.2.15-2+b8"}}));
}

TEST_F(Bindings, AValueIsNotExpandedAgain) {
    given_ = {{"x", "${y}", ""}, {"y", "z", ""}};
    EXPECT_EQ(output(R"(<Package name="bash"/>)", R"(<Variable name="x" value="${x}"/>)"),
              (Variables{{"x", "${y}"}}));
}

TEST_F(Bindings, TwoDollarsBeforeABraceAreNotAVariable) {
    EXPECT_EQ(output(R"(<Package name="bash"/>)", R"(<Variable name="x" value="$${x} $ {"/>)"),
              (Variables{{"x", "${x} $ {"}}));
}

TEST_F(Bindings, AValueCannotWidenAnExpression) {
    given_ = {{"x", "b.*", ""}};
    EXPECT_FALSE(matches(R"(<Package nameRegex="^${x}$"/>)"));
    given_ = {{"x", "bas", ""}};
    EXPECT_TRUE(matches(R"(<Package nameRegex="^${x}.$"/>)"));
}

TEST_F(Bindings, AValueCannotWidenAPattern) {
    tree_.write("opt/abc", "");
    tree_.write("opt/{x,y}", "");
    given_ = {{"x", "*", ""}};
    EXPECT_FALSE(matches(R"(<Glob pattern="/opt/${x}"/>)"));
    given_ = {{"x", "{x,y}", ""}};
    EXPECT_TRUE(matches(R"(<Glob pattern="/opt/${x}"/>)"));
    given_ = {{"x", "abc,def", ""}};
    EXPECT_FALSE(matches(R"(<Glob pattern="/opt/{${x}}"/>)"));
}

TEST_F(Bindings, AValueInAPathStaysBelowTheRoot) {
    tree_.write("inside", "");
    given_ = {{"x", "../../../../../..", ""}};
    EXPECT_TRUE(matches(R"(<File path="/${x}/inside"/>)"));
    EXPECT_FALSE(matches(R"(<File path="/${x}/etc/passwd"/>)"));
}

TEST_F(Bindings, ALongValueIsCutBetweenCharactersAndReported) {
    given_ = {{"x", std::string(4095, 'a') + "\xc3\xa9", ""}};
    EXPECT_EQ(output(R"(<Package name="bash"/>)", R"(<Variable name="x" value="${x}"/>)"),
              (Variables{{"x", std::string(4095, 'a')}}));
    EXPECT_EQ(eventCodes(), std::vector<std::string>{"limit-bytes"});
}

TEST_F(Bindings, TheSignaturesNameIsExpanded) {
    given_ = {{"edition", "X", ""}};
    const std::vector<Match> found = evaluate(
        R"(<Signature guid="g" name="Shell ${edition} ${p.upstream}"><Match><Package id="p" name="bash"/></Match></Signature>)");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().name, "Shell X 5.2.15");
}

TEST_F(Bindings, MetadataIsCopiedAndNotExpanded) {
    const std::vector<Match> found = evaluateOne(
        R"(<Metadata><A b="1">${p.name}</A></Metadata><Match><Package id="p" name="bash"/></Match>)");
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found.front().metadata, R"(<A b="1">${p.name}</A>)");
}

}  // namespace
}  // namespace toolkit::quorvis
