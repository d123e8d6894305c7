// Conversion of trees to XML text.
#include <gtest/gtest.h>

#include <random>

#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

std::string compact(const std::string& xml) {
    return written(*readText(xml).root, Node::kCompact);
}

std::string indented(const std::string& xml) {
    return written(*readText(xml).root, Node::kIndented);
}

TEST(NodeWriter, CompactTextHoldsTagsAttributesAndTexts) {
    const struct {
        const char* xml;
        const char* expected;
    } cases[] = {
        {"<a/>", "<a/>"},
        {"<a></a>", "<a/>"},
        {"<a>text</a>", "<a>text</a>"},
        {"<a z='1' b=\"2\"/>", "<a z=\"1\" b=\"2\"/>"},
        {"<?xml version='1.0'?>\n<a>\n  <b/>\n  <c x=''>y</c>\n</a>\n", "<a><b/><c x=\"\">y</c></a>"},
        {"<a>x<b/> y <!-- c --><c><d/></c></a>", "<a>x<b/> y <c><d/></c></a>"},
        {"<a> </a>", "<a> </a>"},
        {"<a><![CDATA[<&>]]></a>", "<a>&lt;&amp;&gt;</a>"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(compact(each.xml), each.expected) << each.xml;
        EXPECT_EQ(compact(compact(each.xml)), each.expected) << each.xml;
    }
}

TEST(NodeWriter, CharactersThatAReaderWouldChangeAreEscaped) {
    const struct {
        const char* xml;
        const char* expected;
    } cases[] = {
        {"<a>&lt;&gt;&amp;&quot;&apos;</a>", "<a>&lt;&gt;&amp;\"'</a>"},
        {"<a x='&lt;&gt;&amp;&quot;&apos;'/>", "<a x=\"&lt;&gt;&amp;&quot;'\"/>"},
        {"<a>x\ty\nz&#13;w</a>", "<a>x\ty\nz&#13;w</a>"},
        {"<a x='1&#9;2&#10;3&#13;4'/>", "<a x=\"1&#9;2&#10;3&#13;4\"/>"},
        {"<a>]]&gt;</a>", "<a>]]&gt;</a>"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(compact(each.xml), each.expected) << each.xml;
        EXPECT_EQ(compact(each.expected), each.expected);
    }
}

TEST(NodeWriter, TextIsUtf8) {
    const std::string all =
        "<\xC3\xA4 "
        "\xE2\x82\xAC\xC3\xB6=\"\x7F\xC2\x80\xDF\xBF\">"
        "\xE0\xA0\x80\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F\xBF\xBF</\xC3\xA4>";
    const std::string valid =
        "<\xC3\xA4 "
        "\xC3\xB6=\"\x7F\xC2\x80\xDF\xBF\">\xE0\xA0\x80\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F\xBF\xBF</"
        "\xC3\xA4>";
    EXPECT_EQ(readText(all).status, 1) << "no name begins with the euro sign";
    EXPECT_EQ(compact(valid), valid);
    EXPECT_EQ(compact("<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>"), "<a>\xC3\xA4</a>");
}

TEST(NodeWriter, ElementsOfElementsAreIndentedByTwoBlanksALevel) {
    const struct {
        const char* xml;
        const char* expected;
    } cases[] = {
        {"<a/>", "<a/>"},
        {"<a>text</a>", "<a>text</a>"},
        {"<a><b/></a>", "<a>\n  <b/>\n</a>"},
        {"<a><b><c x='1'>y</c><d/></b><e/></a>",
         "<a>\n  <b>\n    <c x=\"1\">y</c>\n    <d/>\n  </b>\n  <e/>\n</a>"},
        {"<a>x<b><c/></b></a>", "<a>x<b><c/></b></a>"},
        {"<a><b>x<c><d/></c></b><e><f/></e></a>",
         "<a>\n  <b>x<c><d/></c></b>\n  <e>\n    <f/>\n  </e>\n</a>"},
        {"<a><b> </b></a>", "<a>\n  <b> </b>\n</a>"},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(indented(each.xml), each.expected) << each.xml;
        EXPECT_EQ(indented(indented(each.xml)), each.expected) << each.xml;
    }
}

TEST(NodeWriter, AnyOtherModeIsCompact) {
    const Document document = readText("<a><b/></a>");
    for (const int mode : {0, 3, -1}) EXPECT_EQ(written(*document.root, mode), "<a><b/></a>");
}

TEST(NodeWriter, SubtreesAndTextsWriteThemselves) {
    const Document document = readText("<a><b><c/></b>x &amp; y</a>");
    const NodeList* children = nullptr;
    ASSERT_EQ(document.root->getChildren(&children), 0);
    EXPECT_EQ(written(*children->front(), Node::kIndented), "<b>\n  <c/>\n</b>");
    EXPECT_EQ(written(*children->front()->nextSibling(), Node::kCompact), "x &amp; y");
}

// Random documents made of difficult parts. Every run generates the same ones.
class Generator {
  public:
    explicit Generator(unsigned seed) : random_(seed) {}

    std::string element(int depth) {
        const std::string name = pick(kNames);
        std::string xml = "<" + name;
        if (chance(3)) xml += " x=\"" + text() + "\"";
        if (chance(4)) xml += " y='" + text() + "'";
        if (depth == 0 || chance(4)) return xml + "/>";
        xml += ">";
        for (auto pieces = random_() % 5; pieces > 0; --pieces) {
            xml += chance(2) ? element(depth - 1) : chance(3) ? pick(kLayout) : text();
        }
        return xml + "</" + name + ">";
    }

  private:
    using Pieces = std::vector<std::string>;

    bool chance(unsigned oneIn) { return random_() % oneIn == 0; }
    const std::string& pick(const Pieces& pieces) { return pieces[random_() % pieces.size()]; }
    std::string text() {
        std::string result;
        for (auto pieces = random_() % 6; pieces > 0; --pieces) result += pick(kTexts);
        return result;
    }

    static inline const Pieces kNames = {"a", "b1", "long-name.x", "\xC3\xA4"};
    static inline const Pieces kLayout = {" ",          "\n",      "\n    ",        "\t",
                                          "<!-- c -->", "<?p i?>", "<![CDATA[<&]]>"};
    static inline const Pieces kTexts = {"x",
                                         " ",
                                         "plain text of more than sixteen bytes",
                                         "&lt;",
                                         "&amp;",
                                         "&gt;",
                                         "&#13;",
                                         "&#10;",
                                         "&#9;",
                                         "\n",
                                         "\r\n",
                                         "]]&gt;",
                                         "\xC3\xA4",
                                         "\xE2\x82\xAC",
                                         "\xF0\x9F\x98\x80",
                                         "&quot;",
                                         "&apos;"};

    std::mt19937 random_;
};

TEST(NodeWriter, WhatWasWrittenIsReadAsTheSameTree) {
    for (unsigned seed = 0; seed < 300; ++seed) {
        const std::string xml = Generator(seed).element(6);
        const Document first = readText(xml);
        ASSERT_EQ(first.status, 0) << xml;
        for (const int mode : {Node::kCompact, Node::kIndented}) {
            const std::string text = written(*first.root, mode);
            const Document second = readText(text);
            ASSERT_EQ(second.status, 0) << text;
            EXPECT_EQ(shown(second.root.get()), shown(first.root.get())) << xml;
            EXPECT_EQ(written(*second.root, mode), text);
        }
    }
}

TEST(NodeWriter, KeptWhitespaceSurvivesInBothModes) {
    const Settings keep = {.keepWhitespace = true};
    const Document first = readText("<a>\n  <b> </b>\n\t<c>\n</c>\n</a>", keep);
    for (const int mode : {Node::kCompact, Node::kIndented}) {
        EXPECT_EQ(written(*first.root, mode), "<a>\n  <b> </b>\n\t<c>\n</c>\n</a>");
    }
}

}  // namespace
}  // namespace tessa::test
