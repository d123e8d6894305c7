#include <gtest/gtest.h>

#include <tuple>

#include "tests/toolkit/quorvis/LeafTester.h"
#include "toolkit/quorvis/formats/FormatReaders.h"

namespace toolkit::quorvis {
namespace {

constexpr char kPom[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- a comment -->
<m:project xmlns:m="urn:x" m:id="p1">
  <parent><version>0.9</version></parent>
  <m:version>
    1.2<!-- in between -->.3
  </m:version>
  <dependency scope="test"><name>a</name><version>1</version></dependency>
  <dependency><name>b &amp; c</name></dependency>
  <dependency scope="run"><name><![CDATA[<d>]]></name></dependency>
  <empty/>
</m:project>)";

std::vector<std::string> select(std::string_view document, std::string_view way) {
    std::string problem;
    const auto selection = XmlSelection::parse(way, problem);
    EXPECT_TRUE(selection) << way << problem;
    return selection ? selectValues(document, *selection, 1000).values : std::vector<std::string>();
}

TEST(XmlSelection, StepsLeadToValues) {
    const std::pair<const char*, std::vector<std::string>> kCases[] = {
        {"/project/version", {"1.2.3"}},
        {"project/version", {"1.2.3"}},
        {"/project/@id", {"p1"}},
        {"/project/dependency/name", {"a", "b & c", "<d>"}},
        {"/project/dependency[2]/name", {"b & c"}},
        {"/project/dependency[4]/name", {}},
        {"/project/dependency/@scope", {"test", "run"}},
        {"/project/dependency[3]/@scope", {"run"}},
        {"/project[1]/dependency[1]/version[1]", {"1"}},
        {"/project/empty", {""}},
        {"/project/empty/@none", {}},
        {"/version", {}},
        {"/project/name", {}},
        {"/parent/version", {}},
    };
    for (const auto& [way, values] : kCases) EXPECT_EQ(values, select(kPom, way)) << way;
}

TEST(XmlSelection, InvalidSelectionsAreRefused) {
    for (const char* way :
         {"",        "/",           "//a",  "a//b",      "a/",    "@a",     "/@a",
          "a/@",     "a/@b/c",      "a[0]", "a[x]",      "a[1",   "a[",     "a[]",
          "a]",      "a[1]b",       "a/b*", "a@b",       "a[@b]", "a[b=c]", "a[b='c]",
          "a[='x']", "a[b='c'][1]", "*b",   "a[b='c'']", "[1]",   "a[-1]",  "a[99999999999999999999]",
          "a/b?",    "a/{b,c}",     "a/@*", "a/@b[1]"}) {
        std::string problem;
        EXPECT_EQ(std::nullopt, XmlSelection::parse(way, problem)) << way;
        EXPECT_FALSE(problem.empty()) << way;
    }
}

TEST(XmlSelection, TestsOfAttributesAndChildrenSelect) {
    const std::pair<const char*, std::vector<std::string>> kCases[] = {
        {"/project/dependency[@scope='test']/name", {"a"}},
        {"/project/dependency[@scope=\"run\"]/name", {"<d>"}},
        {"/project/dependency[@scope='x']/name", {}},
        {"/project/dependency[name='a']/version", {"1"}},
        {"/project/dependency[name='b & c']/@scope", {}},
        {"/project/dependency[name='a']/@scope", {"test"}},
        {"/project/dependency[version='1']/name", {"a"}},
        {"/project/dependency[@scope='test'][name='a']/version", {"1"}},
        {"/project/dependency[@scope='run'][name='a']/version", {}},
        {"/project/dependency[name='a'][version='2']/name", {}},
        {"/project/dependency[name='a'][version='1']/name", {"a"}},
        {"/project/dependency[2][name='b & c']/name", {"b & c"}},
        {"/project[version='1.2.3']/parent/version", {"0.9"}},
        {"/project[version='1.2']/parent/version", {}},
        {"/project/*/version", {"0.9", "1"}},
        {"/*/*[name='a']/version", {"1"}},
        {"/*/*[@scope='run']/*", {"<d>"}},
        {"/project/*[3]/@scope", {"test"}},
        {"/project/*[@scope='run'][1]/name", {"<d>"}},
    };
    for (const auto& [way, values] : kCases) EXPECT_EQ(values, select(kPom, way)) << way;
}

TEST(XmlSelection, ATestedChildMayFollowTheValue) {
    const char* const document =
        "<l><e><v>1</v><k>a</k></e><e><v>2</v><k>b/]'</k></e><e><k>x</k><v>3</v><s><k>a</k></s></e>"
        "<e><v>4</v><k> a </k><k>c</k></e><e k='a'><v>5</v></e></l>";
    EXPECT_EQ((std::vector<std::string>{"1", "4"}), select(document, "l/e[k='a']/v"));
    EXPECT_EQ((std::vector<std::string>{"4"}), select(document, "l/e[k='c']/v")) << "one of them is enough";
    EXPECT_EQ((std::vector<std::string>{"2"}), select(document, "l/e[k=\"b/]'\"]/v"));
    EXPECT_EQ((std::vector<std::string>{"5"}), select(document, "l/e[@k='a']/v"));
}

TEST(XmlSelection, ValuesOfElementsThatFailDoNotCount) {
    std::string problem;
    const auto selection = XmlSelection::parse("l/e[k='a']/v", problem);
    std::string document = "<l>";
    for (int i = 0; i < 100; ++i) document += "<e><v>0</v><k>b</k></e>";
    const SelectedValues found = selectValues(document + "<e><v>1</v><k>a</k></e></l>", *selection, 1);
    EXPECT_EQ(std::vector<std::string>{"1"}, found.values);
    EXPECT_FALSE(found.tooMany);
    EXPECT_TRUE(selectValues("<l><e><v>1</v><v>2</v><k>a</k></e></l>", *selection, 1).tooMany);
    EXPECT_EQ(std::vector<std::string>{"1"}, selectValues("<l><e><v>1</v><k>a</k>", *selection, 10).values);
    EXPECT_TRUE(selectValues("<l><e><v>1</v><k>a", *selection, 10).values.empty()) << "not decided";
}

TEST(XmlSelection, ADamagedDocumentGivesTheValuesBeforeTheDamage) {
    std::string problem;
    const auto selection = XmlSelection::parse("a/b", problem);
    const SelectedValues values = selectValues("<a>\n<b>1</b><b>2</c></a>", *selection, 10);
    EXPECT_EQ(std::vector<std::string>{"1"}, values.values);
    ASSERT_TRUE(values.problem);
    EXPECT_TRUE(values.problem->starts_with("line 2, column ")) << *values.problem;
}

TEST(XmlSelection, UnsupportedEncodingsAndVersionsAreReported) {
    std::string problem;
    const auto selection = XmlSelection::parse("a", problem);
    const std::tuple<const char*, const char*, const char*> cases[] = {
        {"1.0", "windows-1255",
         "line 1, column 1: encoding \"windows-1255\" is not supported, UTF-8 is expected"},
        {"1.0", "UTF-7", "line 1, column 1: encoding \"UTF-7\" is not supported, UTF-8 is expected"},
        {"2.0", "UTF-8", "line 1, column 1: XML version \"2.0\" is not supported"},
        {"1.0", "iso-8859-1", nullptr},
        {"1.1", "UTF-8", nullptr},
    };
    for (const auto& [version, encoding, told] : cases) {
        const std::string text =
            std::string("<?xml version='") + version + "' encoding='" + encoding + "'?><a>1</a>";
        const SelectedValues values = selectValues(text, *selection, 10);
        if (told != nullptr) {
            EXPECT_TRUE(values.values.empty()) << text;
            EXPECT_EQ(values.problem, told);
        } else {
            EXPECT_EQ(values.values, std::vector<std::string>{"1"}) << text;
        }
    }
}

TEST(XmlSelection, TruncatedDocumentsAreDamaged) {
    std::string problem;
    const auto selection = XmlSelection::parse("/project/version", problem);
    const std::string_view whole = kPom;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const SelectedValues values = selectValues(std::string(whole.substr(0, size)), *selection, 10);
        EXPECT_TRUE(values.problem) << size;
        EXPECT_TRUE(values.values.empty() || values.values == std::vector<std::string>{"1.2.3"}) << size;
    }
}

class XmlLeaf : public ::testing::Test {
  protected:
    LeafResult ask(const std::string& content, LeafTester::Attributes attributes) {
        tester_.tree.write("x.xml", content);
        attributes.emplace_back(Attribute::Path, "/x.xml");
        return tester_.ask(LeafKind::Xml, std::move(attributes));
    }

    LeafTester tester_;
};

TEST_F(XmlLeaf, ValuesThatPassTheTestsAreItems) {
    const std::string document = "<a><b>1.9</b><b>1.10</b><b>x1.20</b></a>";
    const LeafResult result = ask(
        document, {{Attribute::Select, "/a/b"}, {Attribute::AtLeast, "1.10"}, {Attribute::Regex, "^[0-9]"}});
    ASSERT_EQ(1U, result.items.size());
    EXPECT_EQ("1.10", *result.items[0].find("value"));
    EXPECT_EQ("/x.xml", result.items[0].source);
    EXPECT_FALSE(result.incomplete);
}

TEST_F(XmlLeaf, DangerousDocumentsAreRefused) {
    const std::string deep = [] {
        std::string text;
        for (int i = 0; i < 65; ++i) text += "<a>";
        return text;
    }();
    const std::string kDocuments[] = {
        "<!DOCTYPE a [<!ENTITY x \"1\">]><a>&x;</a>",
        "<!DOCTYPE a SYSTEM \"file:///etc/passwd\"><a/>",
        deep,
        "no XML",
        "",
    };
    for (const std::string& document : kDocuments) {
        const LeafResult result = ask(document, {{Attribute::Select, "a"}});
        EXPECT_TRUE(result.items.empty()) << document;
        EXPECT_TRUE(result.incomplete) << document;
        EXPECT_EQ(std::vector{EventCode::Parse}, LeafTester::codes(result)) << document;
    }
}

TEST_F(XmlLeaf, TooManyValuesLeaveItIncomplete) {
    tester_.settings.fileSystem.maxMatches = 2;
    const LeafResult result = ask("<a><b/><b/><b/></a>", {{Attribute::Select, "a/b"}});
    EXPECT_EQ(2U, result.items.size());
    EXPECT_EQ(std::vector{EventCode::LimitMatches}, LeafTester::codes(result));
}

TEST_F(XmlLeaf, LongTextsAreCut) {
    const LeafResult result = ask("<a>" + std::string(100'000, ' ') + std::string(100'000, 'x') + "</a>",
                                  {{Attribute::Select, "a"}});
    EXPECT_EQ(std::string(8192, 'x'), LeafTester::first(result, "value"));
}

TEST_F(XmlLeaf, AnInvalidSelectionIsUnknown) {
    EXPECT_EQ(std::vector{EventCode::Unsupported},
              LeafTester::codes(ask("<a/>", {{Attribute::Select, "a["}})));
}

}  // namespace
}  // namespace toolkit::quorvis
