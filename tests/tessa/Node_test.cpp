// The interface of nodes, lists of nodes and attributes.
#include "tessa/Node.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <type_traits>

#include "tessa/TextStore.h"
#include "tests/support/Allocations.h"
#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

static_assert(std::has_virtual_destructor_v<Node>);

const NodeList& childrenOf(const Node& node) {
    const NodeList* children = nullptr;
    EXPECT_EQ(node.getChildren(&children), 0);
    return *children;
}

TEST(Node, ElementHasTypeNameAndChildren) {
    const Document document = readText("<root><b/>text</root>");
    const Node& root = *document.root;
    EXPECT_EQ(root.type(), 0);
    EXPECT_EQ(root.type(), Node::kElement);
    EXPECT_STREQ(root.text(), L"root");
    EXPECT_EQ(root.name().compareTo(L"root"), 0);
    EXPECT_NE(root.name().compareTo(L"Root"), 0);
    EXPECT_EQ(root.name().compareTo(kest::String(L"ROOT"), 1), 0);
    const NodeList& children = childrenOf(root);
    EXPECT_FALSE(children.empty());
    EXPECT_EQ(children.front(), *children.begin());
    EXPECT_EQ(std::distance(children.begin(), children.end()), 2);
    EXPECT_EQ(&childrenOf(root), &children) << "the node's own list";
}

TEST(Node, TextHasTypeAndTextOnly) {
    const Document document = readText("<a>some text</a>");
    const Node& text = *childrenOf(*document.root).front();
    EXPECT_EQ(text.type(), 1);
    EXPECT_EQ(text.type(), Node::kText);
    EXPECT_STREQ(text.text(), L"some text");
    EXPECT_EQ(text.name().length(), 0U);
    EXPECT_EQ(text.attributes()->count(), 0);
    EXPECT_EQ(text.nextSibling(), nullptr);
    const NodeList untouched;
    const NodeList* children = &untouched;
    EXPECT_NE(text.getChildren(&children), 0);
    EXPECT_EQ(children, &untouched);
}

TEST(Node, ElementWithoutContentHasAnEmptyList) {
    const Document document = readText("<a/>");
    const NodeList& children = childrenOf(*document.root);
    EXPECT_TRUE(children.empty());
    EXPECT_EQ(children.front(), nullptr);
    EXPECT_TRUE(children.begin() == children.end());
}

TEST(Node, ListServesTheStandardAlgorithms) {
    const Document document = readText("<a><b/>x<c/>y<d/></a>");
    const NodeList& children = childrenOf(*document.root);
    EXPECT_EQ(std::count_if(children.begin(), children.end(),
                            [](const Node* node) { return node->type() == Node::kElement; }),
              3);
    const Node* last = children.front();
    while (last->nextSibling() != nullptr) last = last->nextSibling();
    EXPECT_STREQ(last->text(), L"d");
}

TEST(Node, AttributesStandInDocumentOrder) {
    const Document document = readText("<a z='1' b='' m='three &amp; more'/>");
    const StringMap& attributes = *document.root->attributes();
    EXPECT_EQ(attributes.count(), 3);
    const std::pair<std::wstring, std::wstring> expected[] = {
        {L"z", L"1"}, {L"b", L""}, {L"m", L"three & more"}};
    for (int i = 0; i < 3; ++i) {
        kest::String name(L"old");
        kest::String value(L"old");
        EXPECT_EQ(attributes.getEntry(i, name, value), 0);
        EXPECT_EQ(name.view(), expected[i].first);
        EXPECT_EQ(value.view(), expected[i].second);
    }
}

TEST(Node, AttributesCanBeWalkedWithoutCopies) {
    const Document document = readText("<a z='1' b='2'><c b='3'/><c/></a>");
    std::vector<const kest::String*> names;
    std::wstring values;
    for (const Attribute& attribute : *document.root->attributes()) {
        names.push_back(attribute.name);
        values += TextStore::wide(attribute.value);
    }
    EXPECT_EQ(values, L"12");
    EXPECT_EQ(names.at(0)->view(), L"z");
    const Node* const child = childrenOf(*document.root).front();
    EXPECT_EQ(child->attributes()->begin()->name, names.at(1)) << "a document holds each name once";
    const StringMap* const none = child->nextSibling()->attributes();
    EXPECT_EQ(none->begin(), none->end());
}

TEST(Node, AttributeOutsideTheCountIsRefused) {
    const Document document = readText("<a x='1'><b/></a>");
    const StringMap* const maps[] = {document.root->attributes(),
                                     childrenOf(*document.root).front()->attributes()};
    for (const StringMap* const map : maps) {
        for (const int index : {-1, map->count(), map->count() + 1, -2147483647 - 1, 2147483647}) {
            kest::String name(L"old");
            kest::String value(L"old");
            EXPECT_NE(map->getEntry(index, name, value), 0);
            EXPECT_EQ(name.view(), L"old");
            EXPECT_EQ(value.view(), L"old");
        }
    }
}

TEST(Node, DeletingTheRootReleasesTheWholeTree) {
    const zavtest::ScratchDir directory;
    const auto file = directory.write("text.xml", "<a x='1'>" + std::string(100000, 't') + "<b/><c/></a>");
    const long before = zavtest::liveBlocks();
    {
        Document document = readFile(file);
        EXPECT_GT(zavtest::liveBlocks(), before);
        document.root.reset();
        EXPECT_EQ(zavtest::liveBlocks(), before);
    }
}

TEST(Node, SharedTextsOutliveTheTree) {
    const long before = zavtest::liveBlocks();
    std::shared_ptr<const void> texts;
    const wchar_t* name = nullptr;
    const wchar_t* text = nullptr;
    {
        const Document document = readText("<root>some text<b/></root>");
        const Node& root = *document.root;
        texts = root.shareTexts();
        ASSERT_NE(texts, nullptr);
        name = root.text();
        text = childrenOf(root).front()->text();
        for (const Node* const child : childrenOf(root)) EXPECT_EQ(child->shareTexts(), nullptr);
    }
    EXPECT_STREQ(name, L"root");
    EXPECT_STREQ(text, L"some text");
    texts.reset();
    EXPECT_EQ(zavtest::liveBlocks(), before);
}

TEST(Node, EqualNamesAreOneText) {
    const Document document = readText("<a a='1'><b/><b/></a>");
    const NodeList& children = childrenOf(*document.root);
    EXPECT_EQ(children.front()->text(), children.front()->nextSibling()->text());
}

}  // namespace
}  // namespace tessa::test
