#include "hw/HWPlainOutput.h"

#include <gtest/gtest.h>

#include "hw/HWParser.h"
#include "intake/XMLParser.h"
#include "kest/Text.h"
#include "tests/support/ScratchDir.h"

namespace zav {
namespace {

// The name and the value of each field of each instance of each group.
using Fields = std::vector<std::pair<std::wstring, std::wstring>>;
using Tables = std::vector<std::vector<Fields>>;

class HWPlainOutputTest : public testing::Test {
  protected:
    // The number of instances, and the tables.
    int plain(const std::string& document) { return HW_readPlainOutput(&context_, path(document)); }
    Tables tables() const { return tablesOf(context_); }

    // The tables that a tree of the document gives; nothing if it is refused.
    std::optional<Tables> fromTree(const std::string& document) {
        ZAVHwCtx context;
        const XMLParser parser(nullptr, path(document).c_str());
        if (parser.status != 0 || HW_parseHWData(&context, parser.getRootNode()) != 0) return std::nullopt;
        return tablesOf(context);
    }

    void expectSameTables(const std::string& document, int instances) {
        EXPECT_EQ(plain(document), instances) << document;
        EXPECT_EQ(std::optional(tables()), fromTree(document)) << document;
    }

    ZAVHwCtx context_;

  private:
    static Tables tablesOf(const ZAVHwCtx& context) {
        Tables tables(kGroupSlots);
        for (int group = 0; group < kGroupSlots; ++group) {
            for (int i = 0; const HWTables::Row* const row = context.tables.find(group, i); ++i) {
                Fields fields;
                for (std::size_t field = 0; field < row->size(); ++field)
                    fields.emplace_back((*row->names)[field], tessa::TextStore::wide(row->values[field]));
                tables[static_cast<std::size_t>(group)].push_back(fields);
            }
        }
        return tables;
    }

    std::wstring path(const std::string& document) {
        return kest::widen(directory_.write("output.xml", document).string());
    }

    zavtest::ScratchDir directory_;
};

TEST_F(HWPlainOutputTest, ThereAreTheSameTablesAsFromATree) {
    expectSameTables("<QEL/>", 0);
    expectSameTables("<QEL>\n</QEL>", 0);
    expectSameTables("<QEL> <Memory/> <Modem></Modem>  <Memory/></QEL>", 3);
    expectSameTables(
        "<QEL><Memory><Size>12</Size><Size>13</Size><Empty/><Name>a&amp;\xC3\xA4</Name></Memory></QEL>", 1);
    expectSameTables("<QEL>\n <Memory>\n  <Size>1</Size>\n </Memory>\n <Memory>\n</Memory>\n</QEL>\n", 2);
    expectSameTables("<QEL><Memory><A> </A><B>\n</B><C> x\n</C><D>&#10;</D><E>\t </E></Memory></QEL>", 1);
    expectSameTables("<QEL><Memory> <Size/> </Memory></QEL>", 1);
    expectSameTables("<Memory><Memory><Memory/></Memory></Memory>", 1);
    expectSameTables("<QEL a='1'><Memory b='2'><Size c='3'>1</Size></Memory></QEL>", 1);
}

TEST_F(HWPlainOutputTest, WhatIsWrongIsLeftToTheTree) {
    for (const char* const document : {
             "<QEL>text</QEL>",
             "<QEL> </QEL>",
             "<QEL><Memory/>text</QEL>",
             "<QEL><Memory> </Memory></QEL>",
             "<QEL><Memory>text</Memory></QEL>",
             "<QEL><Memory><Size/>text</Memory></QEL>",
             "<QEL><Memory>&#32;</Memory></QEL>",
             "<QEL><Memory><Size>1<Unit/></Size></Memory></QEL>",
             "<QEL><Unknown/></QEL>",
             "<QEL><Memory><Size>1</Size></Memory><memory/></QEL>",
             "<QEL><Memory/>",
         }) {
        EXPECT_EQ(plain(document), -1) << document;
        EXPECT_EQ(tables(), Tables(kGroupSlots)) << document;
        EXPECT_EQ(fromTree(document), std::nullopt) << document;
    }
}

TEST_F(HWPlainOutputTest, WhatIsNotPlainIsLeftToTheTree) {
    EXPECT_EQ(plain("<QEL><Memory><Size>1<!-- -->2</Size></Memory></QEL>"), -1);
    EXPECT_EQ(tables(), Tables(kGroupSlots));
}

TEST_F(HWPlainOutputTest, AFileThatCannotBeReadIsAFault) {
    EXPECT_THROW(HW_readPlainOutput(&context_, L"/nonexistent/output.xml"), tessa::Fault);
}

TEST_F(HWPlainOutputTest, TheTablesOfThePreviousFileAreDiscarded) {
    EXPECT_EQ(plain("<QEL><Memory><Size>12</Size></Memory></QEL>"), 1);
    expectSameTables("<QEL><Modem><Name>x</Name></Modem></QEL>", 1);
}

TEST_F(HWPlainOutputTest, InstancesWithTheSameNamesShareThem) {
    EXPECT_EQ(plain("<QEL><Memory><A/><B/></Memory><Memory><A/><B/></Memory><Memory><B/><A/></Memory></QEL>"),
              3);
    const auto namesOf = [this](int instance) { return context_.tables.find(3, instance)->names; };
    EXPECT_EQ(namesOf(0), namesOf(1));
    EXPECT_NE(namesOf(1), namesOf(2));
    EXPECT_STREQ((*namesOf(2))[0], L"B");
}

}  // namespace
}  // namespace zav
