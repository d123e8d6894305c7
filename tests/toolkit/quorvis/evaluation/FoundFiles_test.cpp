// A file that cannot be understood costs what it would have shown, and nothing else.
#include "tests/toolkit/quorvis/EvaluationFixture.h"

namespace toolkit::quorvis {
namespace {

class FoundFilesTest : public Evaluation {
  protected:
    // "parse file, unresolved": the codes of the events, with the scope of those that concern single files.
    std::string events() const {
        std::string text;
        for (const EventList::Entry& entry : events_.entries()) {
            text.append(text.empty() ? "" : ", ").append(nameOf(entry.event.code));
            if (entry.event.ofFile) text += " file";
        }
        return text;
    }

    static constexpr char kEach[] = R"(<Each><Glob id="f" pattern="/opt/*/data.json"/></Each>)";
    static constexpr char kVersion[] = R"(<Property id="v" path="${f.path}" format="json" key="version"/>)";
};

TEST_F(FoundFilesTest, ADamagedOneLeavesOnlyItsOwnMatchUndecided) {
    tree_.write("opt/a/data.json", "{broken");
    tree_.write("opt/b/data.json", R"({"version": "1"})");
    EXPECT_EQ(1U, evaluateOne(std::string(kEach) + "<Match>" + kVersion + "</Match>").size());
    EXPECT_EQ("parse file, unresolved file", events());
}

TEST_F(FoundFilesTest, OneThatIsTooLargeDoesSo) {
    settings_.fileSystem.maxContentSize = 8;
    tree_.write("opt/a/data.json", R"({"version": "1"})");
    EXPECT_TRUE(evaluateOne(std::string(kEach) + "<Match>" + kVersion + "</Match>").empty());
    EXPECT_EQ("limit-bytes file, unresolved file", events());
}

TEST_F(FoundFilesTest, AValueThatIsTooLongConcernsItsFile) {
    tree_.write("opt/a/data.json", R"({"version": ")" + std::string(5'000, '1') + "\"}");
    EXPECT_EQ(1U, evaluateOne(std::string(kEach) + "<Match>" + kVersion + "</Match>" +
                              R"(<Output><Variable name="version" value="${v.value}"/></Output>)")
                      .size());
    EXPECT_EQ("limit-bytes file", events());
}

TEST_F(FoundFilesTest, AFileThatAllItemsDependOnConcernsTheSignature) {
    tree_.write("opt/a/data.json", "{}");
    tree_.write("etc/settings.json", "{broken");
    EXPECT_TRUE(evaluateOne(std::string(kEach) +
                            R"(<Match><Property path="/etc/settings.json" format="json" key="k"/></Match>)")
                    .empty());
    EXPECT_EQ("parse, unresolved", events());
}

TEST_F(FoundFilesTest, AnotherReasonConcernsTheSignature) {
    tree_.write("opt/a/data.json", "{broken");
    tree_.write("var/lib/dpkg/status", "\x01\x02");
    EXPECT_TRUE(evaluateOne(std::string(kEach) + "<Match><All>" + kVersion +
                            R"(<Package name="${nothing}"/></All></Match>)")
                    .empty());
    EXPECT_EQ("parse file, undefined-variable, unresolved", events());
}

TEST_F(FoundFilesTest, WithoutEachTheSignatureDependsOnTheFile) {
    tree_.write("opt/a/data.json", "{broken");
    EXPECT_FALSE(matches(R"(<Property path="/opt/a/data.json" format="json" key="version"/>)"));
    EXPECT_EQ("parse, unresolved", events());
}

TEST_F(FoundFilesTest, ADamagedTagConcernsOnlyItself) {
    tree_.write("usr/share/swidtag/a.swidtag", "<broken");
    EXPECT_TRUE(evaluateOne(R"(<Each><SwidTag id="t"/></Each>)").empty());
    EXPECT_EQ("parse file, unresolved file", events());
}

TEST_F(FoundFilesTest, ADamagedPackageDatabaseConcernsTheSignature) {
    tree_.write("var/lib/dpkg/status", std::string(3'000, '\x01'));
    EXPECT_TRUE(evaluateOne(R"(<Each><Package id="p" name="app"/></Each>)").empty());
    EXPECT_EQ("parse, unresolved", events());
}

}  // namespace
}  // namespace toolkit::quorvis
