// Captures of values: a version in a directory's name, a file's name, or the arguments of a process.
#include <cstdlib>
#include <filesystem>

#include "tests/toolkit/quorvis/EvaluationFixture.h"

namespace toolkit::quorvis {
namespace {

class Captures : public Evaluation {
  protected:
    // The values of ${x.version} of all items of a leaf.
    std::string versions(const std::string& leaf) {
        std::string text;
        for (const Match& match : evaluateOne(
                 "<Each>" + leaf + R"(</Each><Output><Variable name="v" value="${x.version}"/></Output>)"))
            for (const auto& [name, value] : match.variables) text += value + " ";
        return text;
    }
    static std::string captureOf(const std::string& value, const std::string& regex, int group = 1) {
        return "<Capture of='" + value + "' regex='" + regex + "' group='" + std::to_string(group) +
               "' name='version'/>";
    }
};

TEST_F(Captures, OfANameSelectTheItemsThatMatch) {
    for (const char* const name : {"node-v18.2.0", "node-v20.1", "nodes", "other-v1.0"})
        tree_.write(std::string("opt/") + name + "/bin/node", "");
    EXPECT_EQ("18.2.0 20.1 ", versions("<Glob id='x' pattern='/opt/*' kind='dir'>" +
                                       captureOf("name", "^node-v([0-9.]+)$") + "</Glob>"));
    EXPECT_EQ("18.2.0 20.1 ", versions("<Glob id='x' pattern='/opt/*/bin/node'>" +
                                       captureOf("dir", "/node-v([0-9.]+)/") + "</Glob>"));
}

TEST_F(Captures, OfAFileBelongToFileToo) {
    tree_.write("lib/libz.so.1.2.13", "");
    EXPECT_EQ("1.2.13 ", versions("<File id='x' path='/lib/libz.so.1.2.13'>" +
                                  captureOf("name", "^libz\\.so\\.([0-9.]+)$") + "</File>"));
    EXPECT_EQ(
        "", versions("<File id='x' path='/lib/libz.so.1.2.13'>" + captureOf("name", "^libq", 0) + "</File>"));
    EXPECT_TRUE(eventCodes().empty());
}

TEST_F(Captures, OfPackagesSearchNameVersionAndUpstream) {
    install("postgresql-15", "1:15.4-2");
    install("postgresql-client", "1:15.4-2");
    const auto package = [](const std::string& capture) {
        return "<Package id='x' nameRegex='^postgresql'>" + capture + "</Package>";
    };
    EXPECT_EQ("1:15.4-2 ",
              versions(package("<Capture of='name' regex='^postgresql-([0-9]+)$' group='1' name='major'/>")));
    EXPECT_EQ(1U, sink_.matches.size());
    const std::string both =
        "<Each>" +
        package(
            "<Capture of='upstream' regex='^([0-9]+)\\.([0-9]+)' group='2' name='minor'/>"
            "<Capture of='minor' regex='.' group='0' name='digit'/>") +
        R"(</Each><Output><Variable name="v" value="${x.minor}${x.digit}"/></Output>)";
    EXPECT_EQ(evaluateOne(both).front().variables, (Variables{{"v", "44"}}));
}

TEST_F(Captures, OfPropertiesAndXmlSearchTheirValues) {
    tree_.write("p", "version=Tool 1.5 (beta)\n");
    tree_.write("x", "<a><b>v2.5</b><b>none</b></a>");
    EXPECT_EQ("1.5 ", versions("<Property id='x' path='/p' format='properties' key='version'>" +
                               captureOf("value", "Tool ([0-9.]+)") + "</Property>"));
    EXPECT_EQ("2.5 ",
              versions("<Xml id='x' path='/x' select='/a/b'>" + captureOf("value", "v([0-9.]+)") + "</Xml>"));
}

TEST_F(Captures, OfContentStandBesideItsGroups) {
    tree_.write("c", "tool 1.5\nother 2.5\n");
    EXPECT_EQ("1.5 ",
              versions("<Content id='x' path='/c' regex='([a-z]+) [0-9.]+'><Capture group='1' name='word'/>"
                       "<Capture of='word' regex='tool' group='0' name='tool'/>" +
                       captureOf("match", "([0-9.]+)$") + "</Content>"));
}

TEST_F(Captures, AnItemWithoutTheValueIsLeftOut) {
    tree_.write("lib/a", "");
    std::filesystem::create_symlink("a", tree_.path() / "lib/b");
    EXPECT_EQ("a ", versions("<Glob id='x' pattern='/lib/*' kind='link'>" + captureOf("target", "(.*)") +
                             "</Glob>"));
    EXPECT_EQ("", versions("<File id='x' path='/lib/a'>" + captureOf("target", "(.*)") + "</File>"));
}

TEST_F(Captures, CountAgainstTheNumberOfItems) {
    tree_.write("opt/a-1/x", "");
    tree_.write("opt/b-2/x", "");
    const std::string leaf = "<Glob pattern='/opt/*' max='1'>" + captureOf("name", "^a-([0-9])$") + "</Glob>";
    EXPECT_TRUE(matches(leaf));
    EXPECT_FALSE(matches("<Glob pattern='/opt/*' max='1'/>"));
}

}  // namespace
}  // namespace toolkit::quorvis
