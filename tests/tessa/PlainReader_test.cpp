// The plain reader gives what Expat gives, or leaves the document to it.
#include "tessa/PlainReader.h"

#include <gtest/gtest.h>

#include <optional>
#include <random>

#include "tessa/DocumentReader.h"
#include "tessa/ReadError.h"
#include "tessa/TreeBuilder.h"
#include "tessa/Utf8.h"
#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

// Documents read in both ways, as XML text with all white space; nothing if the document is left to the other way or
// refused.
class PlainReaderTest : public testing::Test {
  protected:
    using Text = std::optional<std::string>;

    Text plain(const std::string& xml, int blockSize = 0) {
        DocumentFile file(directory_.write("text.xml", xml).c_str());
        TreeBuilder builder(true);
        if (!readPlainDocument(file, blockSize, builder)) return std::nullopt;
        return textOf(builder.takeRoot());
    }

    Text expat(const std::string& xml) {
        DocumentFile file(directory_.write("text.xml", xml).c_str());
        ReaderSettings settings;
        settings.keepWhitespace = true;
        Sink sink;
        try {
            Text text = textOf(readWithExpat(settings, sink, file));
            EXPECT_TRUE(sink.diagnostics.empty()) << xml;
            return text;
        } catch (const Fault&) {
            return std::nullopt;
        }
    }

    void expectPlain(const std::string& xml) {
        const Text expected = expat(xml);
        ASSERT_TRUE(expected) << xml;
        const int size = static_cast<int>(xml.size());
        for (int blockSize = 0; blockSize <= std::min(size + 1, 70); ++blockSize)
            ASSERT_EQ(plain(xml, blockSize), expected) << xml << ", blocks of " << blockSize;
    }

    // For documents of which it does not matter whether they are plain.
    void expectTheSameIfPlain(const std::string& xml, int blockSize = 0) {
        const Text text = plain(xml, blockSize);
        if (text) {
            ASSERT_EQ(text, expat(xml)) << xml;
        }
    }

  private:
    static Text textOf(const std::unique_ptr<Node>& root) {
        return root == nullptr ? Text() : written(*root, Node::kCompact);
    }

    zavtest::ScratchDir directory_;
};

const std::string kSample =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Hardware a='1' b = \"x&lt;&#x20AC;\t'\">\n"
    "  <Memory><Size>12 &amp; \xC3\xA4]] &#65;\xF0\x9F\x98\x80</Size><Empty/>\n<B ></B\t></Memory> "
    "\n</Hardware>\n";

TEST_F(PlainReaderTest, PlainDocumentsAreReadAsByExpat) {
    for (const std::string xml : {
             "<a/>",
             "<a></a>\n \t",
             "<a >text</a\n>",
             "<?xml version='1.0'?><a/>",
             "<?xml version=\"1.0\" encoding='utf-8'  ?>\n\n<a/>",
             "<?xml\tversion = \"1.0\"\nencoding=\"Utf-8\"?> <a/>",
             "<a><b/><b>1</b>2<c> </c>\n</a>",
             "<a x='1' y=\"2\"><b x=''/></a>",
             "<a x='\"&lt;&gt;&amp;&apos;&quot;>]]' y=\"'\n\t \"/>",
             "<a>&lt;&gt;&amp;&apos;&quot;\"'></a>",
             "<a>&#9;&#10;&#13;&#32;&#xD7FF;&#xE000;&#xfffd;&#x10000;&#x10FFFF;&#0000000000065;&#x1FFFE;</a>",
             "<a b='&#9;&#10;&#13;&#x1F600;\xC3\xA4'/>",
             "<a>]</a>",
             "<a>]]</a>",
             "<a>]] ></a>",
             "<a>"
             "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBD\xF0\x90\x80\x80\xF4\x8F"
             "\xBF\xBF</a>",
             "<_:a-b.c1><_ _='' a:b='' xmlns='u' xmlns:x='u'/></_:a-b.c1>",
             "<a><aa/><a/><aab/></a>",
         }) {
        expectPlain(xml);
    }
    expectPlain(kSample);
}

TEST_F(PlainReaderTest, WhatIsNotPlainIsLeftToExpat) {
    for (const std::string xml : {
             "",
             " <a/>",
             "text",
             "\xEF\xBB\xBF<a/>",
             "<!-- --><a/>",
             "<a><!-- --></a>",
             "<a/><!-- -->",
             "<?p?><a/>",
             "<a><?p?></a>",
             "<!DOCTYPE a><a/>",
             "<a><![CDATA[]]></a>",
             "<a>\r\n</a>",
             "<a\r/>",
             "<a b='\r'/>",
             "<\xC3\xA4/>",
             "<a \xC3\xA4=''/>",
             "<?xml version='1.0' standalone='yes'?><a/>",
             "<?xml version='1.0' encoding='ISO-8859-1'?><a/>",
             "<?xml version='1.0' encoding='UTF-8' standalone='no'?><a/>",
         }) {
        EXPECT_EQ(plain(xml), std::nullopt) << xml;
    }
}

TEST_F(PlainReaderTest, WhatIsWrongIsLeftToExpat) {
    for (const std::string xml : {
             "<",
             "<a",
             "<a>",
             "<a/>x",
             "<a/><b/>",
             "<a/></a>",
             "</a>",
             "<a></b>",
             "<a></ab>",
             "<ab></a>",
             "<a><b></a></b>",
             "< a/>",
             "<a/ >",
             "<a></ a>",
             "<a></a/>",
             "<1/>",
             "<-/>",
             "<a><</a>",
             "<a b/>",
             "<a b=/>",
             "<a b=1/>",
             "<a b='1/>",
             "<a b='<'/>",
             "<a b='1'c='2'/>",
             "<a b='1' b='2'/>",
             "<a ='1'/>",
             "<a>]]></a>",
             "<a>&</a>",
             "<a>&amp</a>",
             "<a>&x;</a>",
             "<a>& lt;</a>",
             "<a>&LT;</a>",
             "<a b='&'/>",
             "<a b='&x;'/>",
             "<a>&#;</a>",
             "<a>&#x;</a>",
             "<a>&#A;</a>",
             "<a>&#X41;</a>",
             "<a>&#65 ;</a>",
             "<a>&#-1;</a>",
             "<a>&#0;</a>",
             "<a>&#8;</a>",
             "<a>&#xD800;</a>",
             "<a>&#xDFFF;</a>",
             "<a>&#xFFFE;</a>",
             "<a>&#xFFFF;</a>",
             "<a>&#x110000;</a>",
             "<a>&#x100000041;</a>",
             "<a>&#4294967361;</a>",
             "<a>\x01</a>",
             "<a>\x1F</a>",
             "<a b='\x02'/>",
             "<?xml?><a/>",
             "<?xml version='1.1'?><a/>",
             "<?xml version='&#49;.0'?><a/>",
             "<?xml version='1.0'encoding='UTF-8'?><a/>",
             "<?xml encoding='UTF-8' version='1.0'?><a/>",
             "<?xml version='1.0' encoding='UTF-8' ? ><a/>",
             "<?xml version='1.0'?>",
         }) {
        EXPECT_EQ(plain(xml), std::nullopt) << xml;
        EXPECT_EQ(expat(xml), std::nullopt) << xml;
    }
    for (const std::string& zero :
         {std::string("<a>\0</a>", 8), std::string("<a/>\0", 5), std::string("\0<a/>", 5)})
        EXPECT_EQ(plain(zero), std::nullopt);
}

TEST_F(PlainReaderTest, EveryPrefixIsLeftToExpatUnlessItIsWhole) {
    const std::size_t whole = kSample.rfind('>') + 1;
    for (std::size_t size = 0; size <= kSample.size(); ++size) {
        const std::string prefix = kSample.substr(0, size);
        EXPECT_EQ(plain(prefix).has_value(), size >= whole) << prefix;
        expectTheSameIfPlain(prefix, 7);
    }
}

TEST_F(PlainReaderTest, EveryCharacterIsReadAsByExpat) {
    std::string all = "<a b='x'>";
    for (wchar_t code = ' '; code <= 0x10FFFF; ++code) {
        const bool isCharacter = (code < 0xD800 || code > 0xDFFF) && code != 0xFFFE && code != 0xFFFF;
        if (!isCharacter || code == '<' || code == '&') continue;
        char bytes[4];
        all.append(bytes, narrowUtf8(code, bytes));
    }
    all += "</a>";
    const Text text = plain(all);
    ASSERT_TRUE(text);
    EXPECT_TRUE(text == expat(all));
}

// At the limits of what is valid, in a text and in a value.
TEST_F(PlainReaderTest, SequencesOfUtf8AreReadAsByExpatOrLeftToIt) {
    for (const int lead : {0x80, 0xBF, 0xC0, 0xC1, 0xC2, 0xDF, 0xE0, 0xE1, 0xEC, 0xED, 0xEE, 0xEF, 0xF0, 0xF1,
                           0xF3, 0xF4, 0xF5, 0xFF}) {
        for (const int second : {0x00, 0x20, 0x3C, 0x7F, 0x80, 0x8F, 0x90, 0x9F, 0xA0, 0xBF, 0xC0, 0xFF}) {
            for (const int third : {0x41, 0x7F, 0x80, 0xBD, 0xBE, 0xBF, 0xC0}) {
                for (const std::string last : {"", "\x80", "\xBF", "x"}) {
                    const std::string bytes = {static_cast<char>(lead), static_cast<char>(second),
                                               static_cast<char>(third)};
                    expectTheSameIfPlain("<a>" + bytes + last + "</a>");
                    expectTheSameIfPlain("<a b='" + bytes + last + "'/>");
                }
            }
        }
    }
}

TEST_F(PlainReaderTest, TextsMayBeLongerThanTheBuffer) {
    const std::string text(300'000, 'x');
    expectTheSameIfPlain("<a>" + text + "</a>");
    EXPECT_EQ(plain("<a>" + text + "</a>"), "<a>" + text + "</a>");
    const std::string blanks(200'000, ' ');
    EXPECT_TRUE(plain("<a/>" + blanks));
}

TEST_F(PlainReaderTest, TagsThatDoNotFitIntoTheBufferAreLeftToExpat) {
    EXPECT_TRUE(plain("<a b='" + std::string(60'000, 'x') + "'/>"));
    EXPECT_FALSE(plain("<a b='" + std::string(70'000, 'x') + "'/>"));
    EXPECT_FALSE(plain("<a" + std::string(70'000, ' ') + "/>"));
}

TEST_F(PlainReaderTest, ElementsOfManyAttributesAreLeftToExpat) {
    std::string attributes;
    for (int i = 0; i < 32; ++i) attributes += " x" + std::to_string(i) + "='&amp;" + std::to_string(i) + "'";
    expectPlain("<a" + attributes + "/>");
    EXPECT_FALSE(plain("<a" + attributes + " more=''/>"));
}

TEST_F(PlainReaderTest, DeepDocumentsAreRead) {
    std::string xml;
    for (int i = 0; i < 50'000; ++i) xml += "<a>";
    for (int i = 0; i < 50'000; ++i) xml += "</a>";
    EXPECT_TRUE(plain(xml) == expat(xml));
}

// Changes of a document at random places, most of which make it wrong.
TEST_F(PlainReaderTest, ChangedDocumentsAreReadAsByExpatOrLeftToIt) {
    const std::string pieces = "<>/='\"&;#x! \n\t]a:1\xC3\xA4";
    std::mt19937 random(1);
    for (int round = 0; round < 5'000; ++round) {
        std::string xml = kSample;
        for (unsigned change = 0; change <= random() % 3; ++change) {
            const std::size_t place = random() % xml.size();
            const char piece = pieces[random() % pieces.size()];
            const unsigned kind = random() % 4;
            if (kind == 0) xml.erase(place, 1 + random() % 4);
            if (kind == 1) xml.insert(place, 1, piece);
            if (kind == 2) xml[place] = piece;
            if (kind == 3) xml.insert(place, xml.substr(random() % xml.size(), random() % 12));
            if (xml.empty()) xml = "<";
        }
        expectTheSameIfPlain(xml, static_cast<int>(random() % 70));
    }
}

// Counts events and ends the reading with one of them.
class Refusing final : public PlainSink {
  public:
    explicit Refusing(int events) : left_(events) {}

    bool startElement(std::string_view name, const std::vector<AttributeText>&) override {
        open_.emplace_back(name);
        return next();
    }
    bool endElement() override {
        open_.pop_back();
        return next();
    }
    bool text(std::string_view) override { return next(); }
    std::string_view openName() const override { return open_.back(); }
    std::string_view expectedName() const override { return {}; }

    int left_;

  private:
    bool next() { return left_-- > 0; }

    std::vector<std::string> open_;
};

TEST_F(PlainReaderTest, TheSinkCanEndTheReading) {
    const zavtest::ScratchDir directory;
    const std::string path = directory.write("text.xml", "<a>1<b/>2&amp;</a>");
    constexpr int kEvents = 7;
    for (int events = 0; events <= kEvents; ++events) {
        DocumentFile file(path.c_str());
        Refusing sink(events);
        EXPECT_EQ(readPlainDocument(file, 0, sink), events == kEvents) << events;
        EXPECT_EQ(sink.left_, events == kEvents ? 0 : -1) << "nothing comes after the refusal";
    }
}

}  // namespace
}  // namespace tessa::test
