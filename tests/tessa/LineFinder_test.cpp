// Lines of nodes, which are found by reading the file again.
#include <gtest/gtest.h>

#include "kest/Text.h"
#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

class LineTest : public testing::Test {
  protected:
    int lineOf(const std::string& xml, const NodePath& place, const Settings& settings = {}) {
        path_ = kest::String(kest::widen(directory_.write("text.xml", xml).string()));
        NodeReader reader(sink_);
        reader.blockSize = settings.blockSize;
        reader.keepWhitespace = settings.keepWhitespace;
        return reader.lineOf(path_, place);
    }

    // Every node of the tree is found; places after the last child are not.
    void expectEachNodeFound(const std::string& xml, const Settings& settings, const Node* node,
                             NodePath place) {
        EXPECT_GT(lineOf(xml, place, settings), 0) << xml << testing::PrintToString(place);
        place.push_back(0);
        const NodeList* children = nullptr;
        if (node->getChildren(&children) == 0) {
            for (const Node* const child : *children) {
                expectEachNodeFound(xml, settings, child, place);
                ++place.back();
            }
        }
        EXPECT_EQ(lineOf(xml, place, settings), 0) << xml << testing::PrintToString(place);
    }

    zavtest::ScratchDir directory_;
    Sink sink_;
    kest::String path_;
};

TEST_F(LineTest, EachNodeHasTheLineInWhichItBegins) {
    const std::string xml =
        "<?xml version='1.0'?>\n"
        "<a>\n"
        "  <b\n    x='1'/>\n"
        "  <c>\n    <d>text</d>\n    more\n\n  </c>\n"
        "  <!-- no node -->\n"
        "  end\n"
        "</a>\n";
    EXPECT_EQ(lineOf(xml, {}), 2);
    EXPECT_EQ(lineOf(xml, {0}), 3);
    EXPECT_EQ(lineOf(xml, {1}), 5);
    EXPECT_EQ(lineOf(xml, {1, 0}), 6);
    EXPECT_EQ(lineOf(xml, {1, 0, 0}), 6);
    EXPECT_EQ(lineOf(xml, {1, 1}), 7);
    EXPECT_EQ(lineOf(xml, {2}), 11);
}

TEST_F(LineTest, NodesAreCountedAsTheTreeHasThem) {
    for (const char* const xml :
         {"<a/>", "<a> </a>", "<a>\n</a>", "<a> <b/> </a>", "<a>\n<b> </b>\n<c>\n</c> x</a>",
          "<a>x<!-- y -->z<b/><![CDATA[ ]]><c/>&#32;<?p?></a>", "<a><![CDATA[]]></a>", "<a>&#10;</a>",
          "<a>\r\n <b>x</b>\r\n y\r\n <b/>&lt;</a>", "<!DOCTYPE a [<!ENTITY e '<b/>x'>]><a>&e;<c/>&e; </a>",
          "<!DOCTYPE a SYSTEM 'x'><a>&e;<b/> &e; </a>"}) {
        for (const int blockSize : {0, 1}) {
            for (const bool keepWhitespace : {false, true}) {
                const Settings settings{.blockSize = blockSize, .keepWhitespace = keepWhitespace};
                const Document document = readText(xml, settings);
                ASSERT_NE(document.root, nullptr) << xml;
                expectEachNodeFound(xml, settings, document.root.get(), {});
            }
        }
    }
}

TEST_F(LineTest, LinesAreFoundInEveryEncoding) {
    EXPECT_EQ(lineOf("<?xml version='1.0' encoding='windows-1252'?>\n<a>\n<b>\x80</b>\n<c/>\n</a>", {1}), 4);
    EXPECT_EQ(lineOf("<?xml version='1.0' encoding='ISO-8859-1'?>\n<a>\n\xE4</a>", {0}), 3);
}

TEST_F(LineTest, TheSinkIsNotCalled) {
    EXPECT_EQ(lineOf("<!DOCTYPE a SYSTEM 'x'>\n<a/>", {}), 2);
    EXPECT_EQ(lineOf("<a>\n</b>", {0}), 0);
    EXPECT_EQ(lineOf("<a>\n<b/></c>", {0}), 2) << "what is behind the node is not looked at";
    EXPECT_TRUE(sink_.diagnostics.empty());
    EXPECT_EQ(sink_.trees, 0);
}

TEST_F(LineTest, FileThatIsGoneHasNoLines) {
    EXPECT_EQ(NodeReader(sink_).lineOf(kest::String(L"/no/such/file"), {}), 0);
    EXPECT_EQ(NodeReader(sink_).lineOf(kest::String(L"/dev/zero"), {}), 0);
}

}  // namespace
}  // namespace tessa::test
