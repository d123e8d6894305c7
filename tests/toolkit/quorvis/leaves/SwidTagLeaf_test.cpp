#include <gtest/gtest.h>

#include <filesystem>

#include "tests/toolkit/quorvis/LeafTester.h"

namespace toolkit::quorvis {
namespace {

constexpr char kWidget[] = R"(<?xml version="1.0" encoding="utf-8"?>
<SoftwareIdentity xmlns="http://standards.iso.org/iso/19770/-2/2015/schema.xsd" name="Widget" tagId="widget-2.1"
  version="2.1" tagVersion="3">
 <Entity name="Example" regid="example.com" role="softwareCreator licensor"/>
 <Entity name="Tagger" regid="tagger.org" role="tagCreator"/>
 <Payload><Entity regid="not.here" role="tagCreator"/></Payload>
</SoftwareIdentity>)";

std::string tag(const std::string& attributes) {
    return "<SoftwareIdentity " + attributes + "/>";
}

class SwidTagLeaf : public ::testing::Test {
  protected:
    LeafResult ask(LeafTester::Attributes attributes = {}) {
        return tester_.ask(LeafKind::SwidTag, std::move(attributes));
    }
    std::vector<std::string> ids(LeafTester::Attributes attributes = {}) {
        std::vector<std::string> found;
        for (const Item& item : ask(std::move(attributes)).items) found.push_back(*item.find("tagId"));
        return found;
    }

    LeafTester tester_;
};

using Ids = std::vector<std::string>;

TEST_F(SwidTagLeaf, ATagGivesItsValues) {
    tester_.tree.write("usr/share/swidtag/example/widget.swidtag", kWidget);
    const LeafResult result = ask();
    ASSERT_EQ(1U, result.items.size());
    EXPECT_TRUE(result.events.empty());
    const std::pair<const char*, const char*> kValues[] = {
        {"tagId", "widget-2.1"},
        {"name", "Widget"},
        {"version", "2.1"},
        {"regid", "tagger.org"},
        {"path", "/usr/share/swidtag/example/widget.swidtag"},
        {"tagVersion", "3"},
    };
    for (const auto& [name, value] : kValues) EXPECT_EQ(value, LeafTester::first(result, name));
    EXPECT_EQ("/usr/share/swidtag/example/widget.swidtag", result.items[0].source);
}

TEST_F(SwidTagLeaf, AllTestsMustPass) {
    tester_.tree.write("usr/lib/swidtag/widget.swidtag", kWidget);
    tester_.tree.write("usr/lib/swidtag/x.swidtag", tag("tagId='x' name='X' patch='true' corpus='1'"));
    const std::pair<LeafTester::Attributes, Ids> kCases[] = {
        {{{Attribute::TagId, "x"}}, {"x"}},
        {{{Attribute::Name, "Widget"}}, {"widget-2.1"}},
        {{{Attribute::Regid, "example.com"}}, {"widget-2.1"}},
        {{{Attribute::Regid, "not.here"}}, {}},
        {{{Attribute::Role, "licensor"}}, {"widget-2.1"}},
        {{{Attribute::Role, "licens"}}, {}},
        {{{Attribute::Regid, "example.com"}, {Attribute::Role, "softwareCreator"}}, {"widget-2.1"}},
        {{{Attribute::Regid, "example.com"}, {Attribute::Role, "tagCreator"}}, {}},
        {{{Attribute::Patch, "true"}}, {"x"}},
        {{{Attribute::Patch, "false"}}, {"widget-2.1"}},
        {{{Attribute::Corpus, "true"}}, {"x"}},
        {{{Attribute::AtLeast, "2.0"}}, {"widget-2.1"}},
        {{{Attribute::AtLeast, "2.2"}}, {}},
        {{{Attribute::Below, "9"}}, {"widget-2.1"}},
    };
    for (const auto& [attributes, expected] : kCases)
        EXPECT_EQ(expected, ids(attributes)) << attributes.front().second;
    EXPECT_EQ("example.com", LeafTester::first(ask({{Attribute::Regid, "example.com"}}), "regid"));
}

TEST_F(SwidTagLeaf, TagsAreFoundInAllDirectoriesAndSortedByPath) {
    const char* const kPlaces[] = {
        "etc/swid/swidtags.d/1.swidtag", "opt/product/swidtag/2.swidtag", "srv/tags/3.swidtag",
        "usr/lib/swidtag/4.swidtag",     "usr/share/swidtag/a/5.swidtag", "var/lib/swidtag/6.swidtag",
    };
    Ids expected;
    for (const std::string place : kPlaces) {
        const std::string id(1, place[place.rfind('/') + 1]);
        tester_.tree.write(place, tag("tagId='" + id + "' name='n'"));
        expected.push_back(id);
    }
    tester_.tree.write("usr/share/swidtag/a/b/deep.swidtag", tag("tagId='deep' name='n'"));
    tester_.tree.write("usr/share/swidtag/other.xml", tag("tagId='other' name='n'"));
    tester_.tree.write("opt/file", "");
    std::filesystem::create_directory(tester_.tree.path() / "usr/share/swidtag/d.swidtag");
    tester_.settings.swid.directories = {"/srv/tags", "/srv/none"};
    EXPECT_EQ(expected, ids());
    EXPECT_TRUE(ask().events.empty());
}

TEST_F(SwidTagLeaf, ATagWithTwoPathsCountsOnce) {
    tester_.tree.write("usr/share/swidtag/1.swidtag", tag("tagId='1' name='n'"));
    std::filesystem::create_directories(tester_.tree.path() / "usr/lib");
    std::filesystem::create_symlink("/usr/share/swidtag", tester_.tree.path() / "usr/lib/swidtag");
    const LeafResult result = ask();
    ASSERT_EQ(1U, result.items.size());
    EXPECT_EQ("/usr/share/swidtag/1.swidtag", result.items[0].source);
}

TEST_F(SwidTagLeaf, ADamagedTagIsReportedAndTheOthersAreUsed) {
    const std::string kDamaged[] = {
        std::string(kWidget).substr(0, 200),
        tag("name='no id'"),
        "<other tagId='o' name='n'/>",
        "",
        "\xff",
        "<!DOCTYPE SoftwareIdentity>" + tag("tagId='d' name='n'"),
    };
    for (const std::string& damaged : kDamaged) {
        tester_.tree.write("usr/lib/swidtag/bad.swidtag", damaged);
        tester_.tree.write("usr/lib/swidtag/good.swidtag", tag("tagId='good' name='n'"));
        const LeafResult result = ask();
        EXPECT_EQ(1U, result.items.size()) << damaged;
        EXPECT_TRUE(result.incomplete) << damaged;
        EXPECT_EQ(std::vector{EventCode::Parse}, LeafTester::codes(result)) << damaged;
        EXPECT_EQ("/usr/lib/swidtag/bad.swidtag", result.events[0].path);
    }
}

TEST_F(SwidTagLeaf, ALargeTagIsNotRead) {
    tester_.tree.write("usr/lib/swidtag/1.swidtag", tag("tagId='1' name='n'") + std::string(1 << 20, ' '));
    EXPECT_EQ(std::vector{EventCode::LimitBytes}, LeafTester::codes(ask()));
}

TEST_F(SwidTagLeaf, WhenDisabledItIsUnknown) {
    tester_.settings.swid.enabled = false;
    const LeafResult result = ask();
    EXPECT_TRUE(result.incomplete);
    EXPECT_EQ(std::vector{EventCode::Config}, LeafTester::codes(result));
}

}  // namespace
}  // namespace toolkit::quorvis
