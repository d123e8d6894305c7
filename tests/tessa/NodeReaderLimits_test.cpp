// Documents that are designed to exhaust the reader.
#include <gtest/gtest.h>

#include "tests/support/Faults.h"
#include "tests/support/SmallStack.h"
#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kSmallStack = std::size_t{64} << 10;
constexpr int kDepth = 200000;

std::string repeated(const std::string& text, int count) {
    std::string result;
    for (int i = 0; i < count; ++i) result += text;
    return result;
}

// The depth of nested elements, including the innermost.
int depthOf(const Node* node) {
    int depth = 0;
    const NodeList* children = nullptr;
    while (node != nullptr && node->getChildren(&children) == 0) {
        ++depth;
        node = children->front();
    }
    return depth;
}

TEST(NodeReaderLimits, DocumentsOfAnyDepthWorkOnASmallStack) {
    const zavtest::ScratchDir directory;
    const fs::path file =
        directory.write("deep.xml", repeated("<a>", kDepth) + "x" + repeated("</a>", kDepth));
    int depth = 0;
    std::string compact;
    zavtest::runOnStack(kSmallStack, [&] {
        Document document = readFile(file);
        depth = depthOf(document.root.get());
        compact = written(*document.root, Node::kCompact);
        document.root.reset();
    });
    EXPECT_EQ(depth, kDepth);
    EXPECT_TRUE(compact == zavtest::readAll(file));
}

// Indentation stops at some depth, so the size of the text stays proportional to the tree.
TEST(NodeReaderLimits, IndentationOfADeepDocumentIsBounded) {
    const Document document = readText(repeated("<a>", kDepth) + repeated("</a>", kDepth));
    std::string indented;
    zavtest::runOnStack(kSmallStack, [&] { indented = written(*document.root, Node::kIndented); });
    EXPECT_LT(indented.size(), std::size_t{kDepth} * 1000);
    const Document again = readText(indented);
    EXPECT_EQ(depthOf(again.root.get()), kDepth);
}

TEST(NodeReaderLimits, UnfinishedDeepDocumentIsRefusedOnASmallStack) {
    const zavtest::ScratchDir directory;
    const fs::path file = directory.write("deep.xml", repeated("<a>", kDepth));
    int status = 0;
    zavtest::runOnStack(kSmallStack, [&] { status = readFile(file).status; });
    EXPECT_EQ(status, 1);
}

Diagnostic lastDiagnosticOnASmallStack(const std::string& xml) {
    const zavtest::ScratchDir directory;
    const fs::path file = directory.write("text.xml", xml);
    Diagnostic last = {Kind::kWarning, L"", -1};
    zavtest::runOnStack(kSmallStack, [&] {
        const Document document = readFile(file);
        if (!document.diagnostics.empty()) last = document.diagnostics.back();
    });
    return last;
}

// Entities of which each refers to the previous one several times.
std::string entities(int count, int times) {
    std::string xml = "<!DOCTYPE a [<!ENTITY e0 \"0123456789\">\n";
    for (int i = 1; i < count; ++i) {
        const std::string reference = "&e" + std::to_string(i - 1) + ";";
        xml += "<!ENTITY e" + std::to_string(i) + " \"" + repeated(reference, times) + "\">\n";
    }
    return xml + "]>\n";
}

TEST(NodeReaderLimits, EntitiesThatGrowWithoutEndAreRefused) {
    const wchar_t* const breached = L"limit on input amplification factor (from DTD and entities) breached";
    for (const std::string body : {"<a>&e12;</a>", "<a x='&e12;'/>"}) {
        const Diagnostic last = lastDiagnosticOnASmallStack(entities(13, 10) + body);
        EXPECT_EQ(last.kind, Kind::kCritical);
        EXPECT_EQ(last.message, breached) << body;
    }
}

TEST(NodeReaderLimits, LongChainsOfEntitiesAreRefusedOnASmallStack) {
    const Diagnostic tooMany = {Kind::kCritical, L"too many entities", 65};
    EXPECT_EQ(lastDiagnosticOnASmallStack(entities(100000, 1) + "<a>&e99999;</a>").message, tooMany.message);
    EXPECT_EQ(lastDiagnosticOnASmallStack(entities(65, 1) + "<a>&e64;</a>"), tooMany);
    const Diagnostic doctype = {Kind::kWarning, L"document type declaration: nothing external is loaded", 1};
    EXPECT_EQ(lastDiagnosticOnASmallStack(entities(64, 1) + "<a>&e63;</a>"), doctype);
    EXPECT_EQ(lastDiagnosticOnASmallStack(entities(64, 1) + "<a x='&e63;'/>"), doctype);
}

TEST(NodeReaderLimits, EntityThatNamesItselfIsRefused) {
    EXPECT_EQ(readText("<!DOCTYPE a [<!ENTITY e '&f;'><!ENTITY f '&e;'>]>\n<a>&e;</a>").diagnostics.back(),
              (Diagnostic{Kind::kCritical, L"recursive entity reference", 2}));
}

TEST(NodeReaderLimits, ContentModelsOfAnyDepthAreReadOnASmallStack) {
    const std::string xml =
        "<!DOCTYPE a [<!ELEMENT a " + repeated("(", kDepth) + "b" + repeated(")", kDepth) + ">]><a/>";
    EXPECT_EQ(lastDiagnosticOnASmallStack(xml).kind, Kind::kWarning);
}

std::string externalEntity(const fs::path& path) {
    return "<!DOCTYPE a SYSTEM '" + path.string() + "' [<!ENTITY e SYSTEM '" + path.string() +
           "'><!ENTITY % p SYSTEM '" + path.string() + "'>%p;]><a>x&e;y</a>";
}

TEST(NodeReaderLimits, NothingExternalIsLoaded) {
    const zavtest::ScratchDir directory;
    const Document document = readText(externalEntity(directory.write("secret", "secret")));
    EXPECT_EQ(document.status, 0);
    EXPECT_EQ(shown(document.root.get()), L"a(\"xy\")");
    EXPECT_EQ(document.diagnostics.size(), 3U) << "the declaration and two entities";
}

TEST(NodeReaderLimits, EndlessTokensAreRefusedEarly) {
    const struct {
        const char* begin;
        const char* rest;
    } cases[] = {
        {"<a><!-- ", "x"},
        {"<a>\n<b x='", "x"},
        {"<a><?p ", "x"},
        {"<", "a"},
        {"<a ", "x='1' "},
        {"</", "a"},
        {"<a>&", "x"},
        {"<!DOCTYPE a [<!ENTITY e '", "x"},
        {"<!DOCTYPE a PUBLIC '", "x"},
        {"<!DOCTYPE a [<!-- ", "\n"},
        {"<?xml version='1.0' ", " "},
    };
    constexpr std::size_t kLength = std::size_t{8} << 20;
    for (const auto& each : cases) {
        const zavtest::ScratchDir directory;
        std::string xml = each.begin;
        while (xml.size() < kLength) xml += each.rest;
        const fs::path file = directory.write("endless.xml", xml);
        const std::size_t before = zavtest::bytesRead();
        const Document document = readFile(file);
        EXPECT_EQ(document.status, 1) << each.begin;
        ASSERT_FALSE(document.diagnostics.empty()) << each.begin;
        EXPECT_EQ(document.diagnostics.back().kind, Kind::kCritical) << each.begin;
        EXPECT_LT(zavtest::bytesRead() - before, std::size_t{6} << 20) << each.begin;
    }
}

TEST(NodeReaderLimits, LongTokenIsReportedWithItsLine) {
    const std::string long5 = std::string(std::size_t{5} << 20, 'x');
    EXPECT_EQ(readText("<a>\n\n<b x='" + long5 + "'/></a>").diagnostics,
              (std::vector<Diagnostic>{{Kind::kCritical, L"token too long", 3}}));
    const std::string long3 = std::string(std::size_t{3} << 20, 'x');
    EXPECT_EQ(readText("<a>\n\n<b x='" + long3 + "'/><!-- " + long3 + "--></a>").status, 0);
}

}  // namespace
}  // namespace tessa::test
