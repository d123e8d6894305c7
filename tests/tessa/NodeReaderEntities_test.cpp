// Entities: those that the document declares are replaced, and those that are left out are reported.
#include <gtest/gtest.h>

#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

const std::wstring kExternal = L" is left out: it is external, and nothing external is loaded";
const std::wstring kUndeclared = L" is left out: it is not declared in the document itself";

// The messages after the warning about the declaration itself.
std::vector<Diagnostic> toldOf(const Document& document) {
    EXPECT_FALSE(document.diagnostics.empty());
    if (document.diagnostics.empty()) return {};
    return {document.diagnostics.begin() + 1, document.diagnostics.end()};
}

void expectTold(const std::string& xml, const std::wstring& tree,
                const std::vector<Diagnostic>& diagnostics) {
    for (const int blockSize : {0, 1, 7}) {
        const Document document = readText(xml, {.blockSize = blockSize});
        EXPECT_EQ(document.status, 0) << xml;
        EXPECT_EQ(shown(document.root.get()), tree) << xml;
        EXPECT_EQ(toldOf(document), diagnostics) << xml << "\nin blocks of " << blockSize;
    }
}

Diagnostic warning(const std::wstring& message, int line) {
    return {Kind::kWarning, message, line};
}

TEST(NodeReaderEntities, InternalOnesAreReplacedAlsoThroughParameterEntities) {
    expectTold("<!DOCTYPE a [<!ENTITY % p \"<!ENTITY e 'text'>\">%p;]><a x='&e;'>&e;</a>",
               L"a[x='text'](\"text\")", {});
    expectTold("<!DOCTYPE a [<!ENTITY % q \"<!ENTITY e 'deep'>\"><!ENTITY % p '&#37;q;'>\n%p;]><a>&e;</a>",
               L"a(\"deep\")", {});
    expectTold("<!DOCTYPE a [<!ENTITY % p \"<!ATTLIST a x CDATA 'default'>\">%p;]><a/>", L"a[x='default']",
               {});
    expectTold("<?xml version='1.0' standalone='yes'?><!DOCTYPE a [<!ENTITY e 'text'>]><a>&e;</a>",
               L"a(\"text\")", {});
}

TEST(NodeReaderEntities, ExternalOnesAreReportedWithNameAndLine) {
    expectTold("<!DOCTYPE a [\n<!ENTITY e SYSTEM 'x'>\n<!ENTITY f 'in &e; between'>]>\n<a>\n&f;\n&e;</a>",
               L"a(\"\nin  between\n\")", {warning(L"entity \"e\"" + kExternal, 5)});
    expectTold("<!DOCTYPE a [<!ENTITY e SYSTEM 'x'><!ENTITY f PUBLIC 'p' 'x'>]>\n<a>&f;\n&e;</a>", L"a",
               {warning(L"entity \"f\"" + kExternal, 2), warning(L"entity \"e\"" + kExternal, 3)});
    expectTold(
        "<!DOCTYPE a [<!ENTITY % p SYSTEM 'x'>\n%p;\n<!ENTITY e 'text'>]>\n<a>&e;</a>", L"a",
        {warning(L"parameter entity \"p\"" + kExternal, 2), warning(L"entity \"e\"" + kUndeclared, 4)});
}

TEST(NodeReaderEntities, UndeclaredOnesAreReportedIfTheyCouldBeDeclaredElsewhere) {
    expectTold("<!DOCTYPE a SYSTEM 'x'>\n<a>\n&e;</a>", L"a", {warning(L"entity \"e\"" + kUndeclared, 3)});
    expectTold(
        "<!DOCTYPE a [%p;]>\n<a>b&e;</a>", L"a(\"b\")",
        {warning(L"parameter entity \"p\"" + kUndeclared, 1), warning(L"entity \"e\"" + kUndeclared, 2)});
    expectTold("<!DOCTYPE a SYSTEM 'x'>\n<a>\n&\xC3\xA4;</a>", L"a",
               {warning(L"entity \"\\xC3\\xA4\"" + kUndeclared, 3)});
}

TEST(NodeReaderEntities, OmissionsInAttributesAreReported) {
    const std::vector<Diagnostic> lost = {warning(L"entity \"e\"" + kUndeclared, 3)};
    expectTold("<!DOCTYPE a SYSTEM 'x'>\n<a>\n<b x='1&e;2&lt;&#65;'/></a>", L"a(b[x='12<A'])", lost);
    expectTold("<!DOCTYPE a SYSTEM 'x' [<!ENTITY f '(&e;)'>]>\n<a>\n<b x='&f;'/></a>", L"a(b[x='()'])", lost);
    expectTold("<!DOCTYPE a SYSTEM 'x' [<!ENTITY f '<b x=\"(&e;)\"/>'>]>\n<a>\n&f;</a>", L"a(b[x='()'])",
               lost);
    expectTold("<!DOCTYPE a SYSTEM 'x' [\n<!ATTLIST a x CDATA\n'&e;'>]><a/>", L"a[x='']", lost);
    expectTold("<!DOCTYPE a SYSTEM 'x'>\n<a>\n<b x='&e;&e;'/><b x='&e;'>&e;</b></a>", L"a(b[x=''] b[x=''])",
               lost);
}

TEST(NodeReaderEntities, OmissionsInAttributesAreReportedInEveryEncoding) {
    const std::string rest = "<!DOCTYPE a SYSTEM 'x' [<!ENTITY \xE4 'text'>]>\n<a x='&\xE4;&\xFC;'/>";
    const std::vector<Diagnostic> lost = {warning(L"entity \"\\xC3\\xBC\"" + kUndeclared, 2)};
    for (const char* const encoding : {"ISO-8859-1", "windows-1252"})
        expectTold("<?xml version='1.0' encoding='" + std::string(encoding) + "'?>" + rest, L"a[x='text']",
                   lost);
    std::string wide = "\xFF\xFE";
    for (const char byte : rest) wide += {byte, '\0'};
    expectTold(wide, L"a[x='text']", lost);
}

TEST(NodeReaderEntities, UndeclaredOnesAreMalformedWhereEverythingIsDeclared) {
    for (const char* const xml :
         {"<a>&e;</a>", "<!DOCTYPE a []><a>&e;</a>",
          "<?xml version='1.0' standalone='yes'?><!DOCTYPE a SYSTEM 'x'><a>&e;</a>"}) {
        const Document document = readText(xml);
        EXPECT_EQ(document.status, 1) << xml;
        EXPECT_EQ(document.diagnostics.back(), (Diagnostic{Kind::kCritical, L"undefined entity", 1})) << xml;
    }
}

TEST(NodeReaderEntities, TheNumberOfReportsIsLimited) {
    std::string xml = "<!DOCTYPE a SYSTEM 'x'>\n<a>";
    for (int i = 0; i < 100000; ++i) xml += "&e" + std::to_string(i) + ";";
    const std::vector<Diagnostic> told = toldOf(readText(xml + "</a>"));
    ASSERT_EQ(told.size(), 65U);
    EXPECT_EQ(told[63], warning(L"entity \"e63\"" + kUndeclared, 2));
    EXPECT_EQ(told[64], warning(L"more entities are left out", 2));
}

TEST(NodeReaderEntities, ParameterEntitiesThatGrowOrNestAreRefused) {
    std::string grows = "<!DOCTYPE a [<!ENTITY % p0 '<!-- " + std::string(1000, 'x') + " -->'>\n";
    std::string nests = "<!DOCTYPE a [<!ENTITY % p0 ''>\n";
    for (int i = 1; i < 60; ++i) {
        const std::string before = "&#37;p" + std::to_string(i - 1) + ";";
        const std::string begin = "<!ENTITY % p" + std::to_string(i) + " '";
        grows += begin + before + before + before + before + "'>\n";
        nests += begin + before + "'>\n";
    }
    const Document refused = readText(grows + "%p59;]><a/>");
    EXPECT_EQ(refused.status, 1);
    EXPECT_EQ(refused.diagnostics.back().message,
              L"limit on input amplification factor (from DTD and entities) breached");
    EXPECT_EQ(readText(nests + "%p59;]><a/>").status, 0);
    const std::string self = "<!DOCTYPE a [<!ENTITY % p '&#37;p;'>\n%p;]><a/>";
    EXPECT_EQ(readText(self).diagnostics.back(),
              (Diagnostic{Kind::kCritical, L"recursive entity reference", 2}));
}

}  // namespace
}  // namespace tessa::test
