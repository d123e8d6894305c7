// The trees of various documents.
#include <gtest/gtest.h>

#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

struct Case {
    const char* xml;
    const wchar_t* tree;
};

void check(std::initializer_list<Case> cases, const Settings& settings = {}) {
    for (const Case& each : cases) EXPECT_EQ(treeOf(each.xml, settings), each.tree) << each.xml;
}

TEST(NodeReaderTree, ElementsTextsAndAttributes) {
    check({
        {"<a/>", L"a"},
        {"<a></a>", L"a"},
        {"<a />", L"a"},
        {"\xEF\xBB\xBF<a/>", L"a"},
        {"<?xml version='1.0'?><a/>", L"a"},
        {"<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n<a/>\n\n", L"a"},
        {"<a>text</a>", L"a(\"text\")"},
        {"<a><b/><c/><d/></a>", L"a(b c d)"},
        {"<a><b><c>x</c></b><b/></a>", L"a(b(c(\"x\")) b)"},
        {"<a>x<b/>y<c>z</c>w</a>", L"a(\"x\" b \"y\" c(\"z\") \"w\")"},
        {"<a x='1' y=\"2\"/>", L"a[x='1'][y='2']"},
        {"<a y='2' x='1'><b x=''/></a>", L"a[y='2'][x='1'](b[x=''])"},
        {"<long.name-1_x:y/>", L"long.name-1_x:y"},
        {"<\xC3\xA4 \xE2\x82\xAC='1'/>", L"not well-formed (invalid token)"},
        {"<\xC3\xA4 \xC3\xB6='\xE2\x82\xAC'>\xF0\x9F\x98\x80</\xC3\xA4>",
         L"\xE4[\xF6='\x20AC'](\"\x1F600\")"},
    });
}

TEST(NodeReaderTree, CdataIsText) {
    check({
        {"<a><![CDATA[x<y>&amp;]]></a>", L"a(\"x<y>&amp;\")"},
        {"<a>1<![CDATA[2]]>3<![CDATA[]]>4</a>", L"a(\"1234\")"},
        {"<a><![CDATA[]]></a>", L"a"},
        {"<a><![CDATA[]]]]><![CDATA[>]]></a>", L"a(\"]]>\")"},
        {"<a><![CDATA[ ]]></a>", L"a(\" \")"},
    });
}

TEST(NodeReaderTree, ReferencesAreExpanded) {
    check({
        {"<a>&lt;&gt;&amp;&apos;&quot;</a>", L"a(\"<>&'\"\")"},
        {"<a x='&lt;&gt;&amp;&apos;&quot;'/>", L"a[x='<>&'\"']"},
        {"<a>&#65;&#x42;&#x1F600;&#xe4;</a>", L"a(\"AB\x1F600\xE4\")"},
        {"<a x='&#10;&#9;&#13;'/>", L"a[x='\n\t\r']"},
        {"<a>x&#13;y</a>", L"a(\"x\ry\")"},
    });
}

TEST(NodeReaderTree, CommentsAndInstructionsAreDroppedAndTextJoinsOverThem) {
    check({
        {"<!-- x --><a/><!-- y --><?z w?>", L"a"},
        {"<?style x?><a><?go on?></a>", L"a"},
        {"<a><!-- x --></a>", L"a"},
        {"<a>x<!-- --> <!-- -->y</a>", L"a(\"x y\")"},
        {"<a>x<?p?>y<![CDATA[z]]></a>", L"a(\"xyz\")"},
        {"<a><!-- <b/> --><c/></a>", L"a(c)"},
        {"<a> <!-- x --> </a>", L"a(\"  \")"},
    });
}

TEST(NodeReaderTree, OnlyWhitespaceIsLayoutBesideElementsAndAcrossLines) {
    check({
        {"<a>\n  <b/>\n  <c/>\n</a>", L"a(b c)"},
        {"<a> <b/></a>", L"a(b)"},
        {"<a><b/> </a>", L"a(b)"},
        {"<a><b/>\t<c/></a>", L"a(b c)"},
        {"<a>x <b/> y</a>", L"a(\"x \" b \" y\")"},
        {"<a>x<b/> <c/></a>", L"a(\"x\" b c)"},
        {"<a> <b> </b> </a>", L"a(b(\" \"))"},
        {"<a> </a>", L"a(\" \")"},
        {"<a>\t \t</a>", L"a(\"\t \t\")"},
        {"<a>\n</a>", L"a"},
        {"<a>  \n  </a>", L"a"},
        {"<a>\r\n</a>", L"a"},
        {"<a>&#13;</a>", L"a(\"\r\")"},
        {"<a> x </a>", L"a(\" x \")"},
        {"<a>\nx\n</a>", L"a(\"\nx\n\")"},
        {"<a>\n<!-- x -->\n</a>", L"a"},
        {"<a>\n<![CDATA[ ]]>\n</a>", L"a"},
        {"<a>\xC2\xA0</a>", L"a(\"\xA0\")"},
        {"<a><b/>\xC2\xA0</a>", L"a(b \"\xA0\")"},
    });
}

TEST(NodeReaderTree, WhitespaceIsKeptOnDemand) {
    check(
        {
            {"<a>\n  <b/>\n</a>", L"a(\"\n  \" b \"\n\")"},
            {"<a>\n</a>", L"a(\"\n\")"},
            {"\n<a> <b/></a>\n", L"a(\" \" b)"},
            {"<a> <!-- x --> <b/></a>", L"a(\"  \" b)"},
        },
        {.keepWhitespace = true});
}

TEST(NodeReaderTree, LineEndsBecomeLineFeedsAndBlanksInAttributes) {
    check({
        {"<a>x\r\ny\rz\nw</a>", L"a(\"x\ny\nz\nw\")"},
        {"<a x='1\r\n2\r3\n4\t5'/>", L"a[x='1 2 3 4 5']"},
        {"<a x='  1  2 '/>", L"a[x='  1  2 ']"},
    });
}

TEST(NodeReaderTree, NamesKeepTheirPrefixesUnlessNamespacesAreExpanded) {
    const char* const xml = "<p:a xmlns:p='urn:x' xmlns='urn:y' p:b='1' c='2'><d/></p:a>";
    check({{xml, L"p:a[xmlns:p='urn:x'][xmlns='urn:y'][p:b='1'][c='2'](d)"}, {"<p:a/>", L"p:a"}});
    check({{xml, L"urn:x|a[urn:x|b='1'][c='2'](urn:y|d)"},
           {"<a x='1'/>", L"a[x='1']"},
           {"<p:a/>", L"unbound prefix"}},
          {.expandNamespaces = true});
}

TEST(NodeReaderTree, TextOfAnyLengthIsOneNode) {
    for (const std::size_t length : {1U, 15U, 16U, 17U, 65535U, 65536U, 65537U, 1200000U}) {
        std::wstring expected(length, L'x');
        EXPECT_EQ(treeOf("<a>" + std::string(length, 'x') + "</a>"), L"a(\"" + expected + L"\")");
        EXPECT_EQ(treeOf("<a>" + std::string(length, 'x') + "&lt;<b/></a>"), L"a(\"" + expected + L"<\" b)");
    }
}

TEST(NodeReaderTree, LongTextsCanFollowEachOther) {
    for (const std::size_t length : {20000U, 20001U, 20002U, 20003U, 700000U, 700001U}) {
        std::string xml = "<a>";
        std::wstring expected = L"a(";
        for (const char letter : {'x', 'y', 'z'}) {
            xml.append("<b c='").append(length, letter).append("'>").append(length, letter).append("</b>");
            const std::wstring wide(length, static_cast<wchar_t>(letter));
            expected.append(letter == 'x' ? L"b[c='" : L" b[c='").append(wide);
            expected.append(L"'](\"").append(wide).append(L"\")");
        }
        EXPECT_TRUE(treeOf(xml + "</a>") == expected + L")") << length;
    }
}

TEST(NodeReaderTree, ManyNamesAttributesAndChildrenAreKeptInOrder) {
    std::string xml = "<r";
    std::wstring expected = L"r";
    for (int i = 0; i < 3000; ++i) {
        const std::string number = std::to_string(i);
        xml.append(" a").append(number).append("='").append(number).append("'");
        const std::wstring wide(number.begin(), number.end());
        expected.append(L"[a").append(wide).append(L"='").append(wide).append(L"']");
    }
    xml += ">";
    expected += L"(";
    for (int i = 0; i < 3000; ++i) {
        xml += "<e" + std::to_string(i) + "/>\n";
        expected += (i == 0 ? L"e" : L" e") + std::to_wstring(i);
    }
    EXPECT_EQ(treeOf(xml + "</r>"), expected + L")");
}

TEST(NodeReaderTree, BlockSizeMakesNoDifference) {
    const std::string xml =
        "\xEF\xBB\xBF<?xml version='1.0'?>\n<!DOCTYPE a [<!ENTITY e 'f\xC3\xBCnf'>]>\n"
        "<a x='1&amp;2\xC3\xA4'>\n  <b>\xF0\x9F\x98\x80 x &lt; y\r\nz</b>\n  <c> </c><!-- \xE2\x82\xAC -->\n"
        "  <d><![CDATA[<\xE2\x82\xAC>]]>&e;&#x20AC;</d><?p i?>\n</a>\n";
    const Document whole = readText(xml);
    ASSERT_EQ(whole.status, 0);
    const std::string expected = written(*whole.root, Node::kCompact);
    for (const int blockSize : {-5, 1, 2, 3, 7, 4096, 1 << 20}) {
        const Document document = readText(xml, {.blockSize = blockSize});
        ASSERT_EQ(document.status, 0) << blockSize;
        EXPECT_EQ(written(*document.root, Node::kCompact), expected) << blockSize;
        EXPECT_EQ(document.diagnostics, whole.diagnostics);
    }
}

TEST(NodeReaderTree, BlockBordersFallAnywhereInALargeDocument) {
    std::string xml = "<r>";
    std::wstring expected = L"r(";
    for (int i = 0; i < 20000; ++i) {
        const std::string padding(static_cast<std::size_t>(i % 23), 'p');
        xml.append("<i n='").append(padding).append("&amp;'>\xE2\x82\xAC").append(padding).append("</i>\n");
        const std::wstring wide(padding.begin(), padding.end());
        expected.append(i == 0 ? L"i[n='" : L" i[n='").append(wide);
        expected.append(L"&'](\"\x20AC").append(wide).append(L"\")");
    }
    EXPECT_EQ(treeOf(xml + "</r>"), expected + L")");
}

}  // namespace
}  // namespace tessa::test
