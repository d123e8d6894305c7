#include "hw/HWParser.h"

#include <gtest/gtest.h>

#include "intake/XMLParser.h"
#include "kest/Text.h"
#include "tessa/Utf8.h"
#include "tests/hw/Inventory.h"
#include "tests/support/ChildlessNode.h"

namespace zav {
namespace {

using hwtest::Messages;
using tessa::Node;
using tessa::NodeList;

// The name and the value of each field of an instance.
using Fields = std::vector<std::pair<std::wstring, std::wstring>>;

Fields textsOf(const HWInstance& instance) {
    Fields fields;
    for (const HWField& field : instance.fields) fields.emplace_back(field.name, tessa::widened(field.value));
    return fields;
}

Fields textsOf(const HWTables::Row& row) {
    Fields fields;
    for (std::size_t i = 0; i < row.size(); ++i)
        fields.emplace_back((*row.names)[i], tessa::TextStore::wide(row.values[i]));
    return fields;
}

class HWParserTest : public testing::Test {
  protected:
    HWParserTest() {
        context_.log = std::make_unique<ZAVlog>(3, zavtest::LogRecorder::callback, &log_);
        context_.discardResults();
    }

    // Returns the root of a document. The tree is valid until the next call.
    const Node* read(const std::string& document) {
        const std::wstring path = kest::widen(directory_.write("output.xml", document).string());
        parser_ = std::make_unique<XMLParser>(context_.log.get(), path.c_str());
        EXPECT_EQ(parser_->status, 0) << document;
        return parser_->getRootNode();
    }

    const Node* firstChild(const std::string& document) {
        const NodeList* children = nullptr;
        EXPECT_EQ(read(document)->getChildren(&children), 0);
        return children->front();
    }

    int parse(const std::string& document) { return HW_parseHWData(&context_, read(document)); }

    // Deletes the tree first, as it no longer exists when hosts read the results.
    std::vector<Fields> instances(int group) {
        parser_.reset();
        std::vector<Fields> all;
        for (int i = 0; const HWTables::Row* const row = context_.tables.find(group, i); ++i)
            all.push_back(textsOf(*row));
        return all;
    }

    std::size_t storedInstances() {
        std::size_t count = 0;
        for (int group = 0; group < kGroupSlots; ++group) count += context_.tables.count(group);
        return count;
    }

    ZAVHwCtx context_;
    zavtest::LogRecorder log_;
    zavtest::ScratchDir directory_;
    std::unique_ptr<XMLParser> parser_;
};

Messages finished(int instances) {
    return {{2, 3, "ZAV_hw_run",
             "Parse finish. " + std::to_string(instances) + " groups successfully retrieved"}};
}

const Messages noRootData = {{0, 3, "ZAV_hw_run", "Error during a parse, no root data"}};

TEST_F(HWParserTest, EachChildOfTheRootIsAnInstance) {
    EXPECT_EQ(parse("<QEL><Processor><Name>A</Name><Cores>8</Cores></Processor>"
                    "<Memory><Size>1</Size></Memory>"
                    "<Processor><Cores>4</Cores></Processor></QEL>"),
              0);
    EXPECT_EQ(instances(2), (std::vector<Fields>{{{L"Name", L"A"}, {L"Cores", L"8"}}, {{L"Cores", L"4"}}}));
    EXPECT_EQ(instances(3), (std::vector<Fields>{{{L"Size", L"1"}}}));
}

TEST_F(HWParserTest, TheMessageAtTheEndCountsInstancesNotGroups) {
    EXPECT_EQ(parse("<QEL><Memory/><Memory/><Modem/></QEL>"), 0);
    EXPECT_EQ(log_.messages, finished(3));
}

TEST_F(HWParserTest, TheFieldNamesPointAtTheNamesOfTheInstance) {
    EXPECT_EQ(parse("<QEL><Memory><B>1</B><A>2</A><B>3</B></Memory><Memory/></QEL>"), 0);
    ASSERT_EQ(context_.tables.count(3), 2U);
    const HWTables::Row& row = *context_.tables.find(3, 0);
    const wchar_t** const names = HWTables::nameArray(row);
    EXPECT_EQ(std::vector<std::wstring>(names, names + row.size()),
              (std::vector<std::wstring>{L"B", L"A", L"B"}));
    EXPECT_EQ(HWTables::nameArray(*context_.tables.find(3, 1)), nullptr);
}

TEST_F(HWParserTest, AFieldThatOccursTwiceIsKeptTwice) {
    EXPECT_EQ(parse("<QEL><Memory><Slot>1</Slot><Slot>2</Slot></Memory></QEL>"), 0);
    EXPECT_EQ(instances(3), (std::vector<Fields>{{{L"Slot", L"1"}, {L"Slot", L"2"}}}));
}

TEST_F(HWParserTest, TheNameOfTheRootDoesNotMatter) {
    for (const char* const root : {"QEL", "Memory", "whatever"}) {
        context_.discardResults();
        EXPECT_EQ(parse(std::string("<") + root + "><Memory/></" + root + ">"), 0);
        EXPECT_EQ(instances(3).size(), 1U);
    }
}

TEST_F(HWParserTest, AttributesDoNotMatter) {
    EXPECT_EQ(parse("<QEL a='1'><Memory b='2'><Size unit='MB'>7</Size></Memory></QEL>"), 0);
    EXPECT_EQ(instances(3), (std::vector<Fields>{{{L"Size", L"7"}}}));
}

TEST_F(HWParserTest, AGroupThatIsNotEnabledIsStoredToo) {
    context_.groupEnabled.fill(0);
    EXPECT_EQ(parse("<QEL><Memory/></QEL>"), 0);
    EXPECT_EQ(instances(3).size(), 1U);
}

TEST_F(HWParserTest, ARootWithoutChildrenIsAnEmptyInventory) {
    for (const char* const document :
         {"<QEL/>", "<QEL></QEL>", "<QEL>\n</QEL>", "<QEL><!-- none --></QEL>"}) {
        log_.messages.clear();
        EXPECT_EQ(parse(document), 0) << document;
        EXPECT_EQ(log_.messages, finished(0)) << document;
    }
    EXPECT_EQ(storedInstances(), 0U);
}

TEST_F(HWParserTest, ARootWhoseChildrenCannotBeListedIsAnError) {
    const zavtest::ChildlessNode failing(L"Memory", -1);
    const zavtest::ChildlessNode listless(L"Memory", 0);
    const Node* const text = firstChild("<QEL>text</QEL>");
    for (const Node* const root : {static_cast<const Node*>(nullptr), static_cast<const Node*>(&failing),
                                   static_cast<const Node*>(&listless), text}) {
        log_.messages.clear();
        EXPECT_EQ(HW_parseHWData(&context_, root), 104);
        EXPECT_EQ(log_.messages, noRootData);
    }
}

TEST_F(HWParserTest, TextBetweenInstancesIsAnErrorWithoutAMessage) {
    EXPECT_EQ(parse("<QEL><Memory/>text<Memory/></QEL>"), 104);
    EXPECT_TRUE(log_.messages.empty());
    EXPECT_EQ(instances(3).size(), 1U);
}

TEST_F(HWParserTest, TextBetweenFieldsIsAnErrorWithoutAMessage) {
    EXPECT_EQ(parse("<QEL><Memory/><Memory><A>1</A>text<B>2</B></Memory><Memory/></QEL>"), 104);
    EXPECT_TRUE(log_.messages.empty());
    EXPECT_EQ(instances(3), (std::vector<Fields>{{}}));
}

TEST_F(HWParserTest, AnUnknownGroupIsAnError) {
    for (const char* const name : {"Operating_System", "memory", "QEL", "Memory2"}) {
        context_.discardResults();
        log_.messages.clear();
        EXPECT_EQ(parse(std::string("<QEL><Memory/><") + name + "/><Memory/></QEL>"), 104);
        EXPECT_EQ(log_.messages,
                  (Messages{{0, 3, "ZAV_hw_run", std::string("Error: No such group [") + name + "]"}}));
        EXPECT_EQ(instances(3).size(), 1U);
    }
}

TEST_F(HWParserTest, AnElementInAFieldIsAnErrorThatNamesTheField) {
    EXPECT_EQ(parse("<QEL><Memory><A>1</A></Memory>"
                    "<Memory><B>2</B><C>3<D/></C><E>4</E></Memory><Memory/></QEL>"),
              104);
    EXPECT_EQ(log_.messages,
              (Messages{{0, 3, "parseHWField()", "Error: unrecognized format of value in field [C]"}}));
    EXPECT_EQ(instances(3), (std::vector<Fields>{{{L"A", L"1"}}}));
    EXPECT_EQ(context_.tables.count(3), 1U);
}

TEST_F(HWParserTest, OnlyTheFirstFaultIsReported) {
    EXPECT_EQ(parse("<QEL><Unknown1/><Unknown2/><Memory><A><B/></A></Memory></QEL>"), 104);
    EXPECT_EQ(log_.messages.size(), 1U);
}

TEST_F(HWParserTest, FaultsNeedNoLogger) {
    context_.log.reset();
    EXPECT_EQ(HW_parseHWData(&context_, nullptr), 104);
    for (const char* const document :
         {"<QEL><Unknown/></QEL>", "<QEL>text</QEL>", "<QEL><Memory><A><B/></A></Memory></QEL>"}) {
        EXPECT_EQ(parse(document), 104) << document;
    }
    EXPECT_EQ(parse("<QEL/>"), 0);
}

TEST_F(HWParserTest, AnInstanceWithoutChildrenHasNoFields) {
    const zavtest::ChildlessNode failing(L"Memory", -1);
    const zavtest::ChildlessNode listless(L"Memory", 0);
    const Node* const text = firstChild("<QEL>text</QEL>");
    for (const Node* const element : {static_cast<const Node*>(nullptr), static_cast<const Node*>(&failing),
                                      static_cast<const Node*>(&listless), text}) {
        HWInstance instance;
        EXPECT_EQ(HW_parseHWGroup(&context_, &instance, element), 0);
        EXPECT_TRUE(instance.fields.empty());
    }
    HWInstance instance;
    EXPECT_EQ(HW_parseHWGroup(&context_, &instance, read("<Memory/>")), 0);
    EXPECT_TRUE(instance.fields.empty());
    EXPECT_TRUE(log_.messages.empty());
}

TEST_F(HWParserTest, TheFieldsOfAnInstanceAreAppended) {
    HWInstance instance;
    instance.fields = {{L"first", "1"}};
    EXPECT_EQ(HW_parseHWGroup(&context_, &instance, read("<Memory><B>2</B><A>3</A></Memory>")), 0);
    EXPECT_EQ(textsOf(instance), (Fields{{L"first", L"1"}, {L"B", L"2"}, {L"A", L"3"}}));
}

TEST_F(HWParserTest, AnInstanceStopsAtItsFirstFault) {
    HWInstance instance;
    EXPECT_EQ(HW_parseHWGroup(&context_, &instance, read("<Memory><A>1</A>text<B>2</B></Memory>")), 104);
    EXPECT_EQ(textsOf(instance), (Fields{{L"A", L"1"}}));
}

TEST_F(HWParserTest, AFieldWithoutChildrenHasTheEmptyValue) {
    const zavtest::ChildlessNode failing(L"Memory", -1);
    const zavtest::ChildlessNode listless(L"Memory", 0);
    const Node* const text = firstChild("<QEL>text</QEL>");
    std::string value;
    for (const Node* const field : {static_cast<const Node*>(nullptr), static_cast<const Node*>(&failing),
                                    static_cast<const Node*>(&listless), text}) {
        EXPECT_EQ(HW_parseHWField(&context_, field, value), 0);
    }
    EXPECT_EQ(HW_parseHWField(&context_, read("<Size/>"), value), 0);
    EXPECT_EQ(value, "");
    EXPECT_EQ(parse("<QEL><Memory><Size/><Type></Type></Memory></QEL>"), 0);
    EXPECT_EQ(instances(3), (std::vector<Fields>{{{L"Size", L""}, {L"Type", L""}}}));
}

TEST_F(HWParserTest, AFieldsTextIsAddedToTheValue) {
    std::string value = "before ";
    EXPECT_EQ(HW_parseHWField(&context_, read("<Size>text</Size>"), value), 0);
    EXPECT_EQ(value, "before text");
}

TEST_F(HWParserTest, TheTextBeforeAnElementInAFieldIsNoValue) {
    std::string value;
    EXPECT_EQ(HW_parseHWField(&context_, read("<Size>1<Unit/>2</Size>"), value), 104);
    EXPECT_EQ(log_.messages,
              (Messages{{0, 3, "parseHWField()", "Error: unrecognized format of value in field [Size]"}}));
}

struct ValueCase {
    const char* content;
    const wchar_t* value;
};

class HWValueTest : public HWParserTest, public testing::WithParamInterface<ValueCase> {};

TEST_P(HWValueTest, IsTheConcatenationOfTheFieldsTexts) {
    EXPECT_EQ(parse(std::string("<QEL><Memory><F>") + GetParam().content + "</F></Memory></QEL>"), 0);
    EXPECT_EQ(instances(3), (std::vector<Fields>{{{L"F", GetParam().value}}})) << GetParam().content;
}

INSTANTIATE_TEST_SUITE_P(Contents, HWValueTest,
                         testing::Values(ValueCase{"text", L"text"}, ValueCase{"a<!-- -->b<?p?>c", L"abc"},
                                         ValueCase{"a<![CDATA[<b>]]>c", L"a<b>c"},
                                         ValueCase{"&lt;&amp;&gt;&quot;&apos;", L"<&>\"'"},
                                         ValueCase{"&#65;&#x1F600;", L"A\U0001F600"},
                                         ValueCase{"\xC3\xA4", L"\u00E4"}, ValueCase{" ", L" "},
                                         ValueCase{" a b ", L" a b "}, ValueCase{"one\ntwo", L"one\ntwo"},
                                         ValueCase{"one\r\ntwo", L"one\ntwo"},
                                         ValueCase{"<!-- only -->", L""}));

}  // namespace
}  // namespace zav
