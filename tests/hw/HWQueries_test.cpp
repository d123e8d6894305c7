// The getters: the checks of each in order, with code, message and level.
#include <functional>

#include "tests/hw/Inventory.h"

namespace hwtest {
namespace {

const wchar_t* const untouchedText = L"untouched";
constexpr int untouchedNumber = 4711;

// The output arguments of a query, which must be written only on success.
struct Outputs {
    int number = untouchedNumber;
    const wchar_t* text = untouchedText;
    const wchar_t** names = &text;

    bool areUntouched() const { return number == untouchedNumber && text == untouchedText && names == &text; }
};

// The states of a context that the checks distinguish.
enum class State { Unscanned, Scanned, Failed };

struct QueryCase {
    const char* name;
    State state;
    std::function<int(ZAVHwCtx*, Outputs&)> query;
    int code;
    Messages messages;
};

// Group 3 has one instance with two fields of the same name and one without fields; group 4 has none; group 5 is not
// enabled.
class HWQueryTest : public InventoryTest {
  protected:
    HWQueryTest() {
        put("output.xml",
            "<QEL><Memory><Slot>1</Slot><Slot>2</Slot><Empty/></Memory><Memory/><Storage/></QEL>");
        put("status", "9");
        disable(5);
    }

    void enter(State state) {
        if (state == State::Scanned) {
            scannerIs("CopyOutput");
            ASSERT_EQ(run(), 0);
        } else if (state == State::Failed) {
            scannerIs("FailAfterOutput");
            ASSERT_EQ(run(), 103);
        }
        takeMessages();
    }
};

class HWRefusalTest : public HWQueryTest, public testing::WithParamInterface<QueryCase> {};

TEST_P(HWRefusalTest, HasItsCodeAndMessagesAndTouchesNoOutput) {
    enter(GetParam().state);
    Outputs outputs;
    EXPECT_EQ(GetParam().query(context(), outputs), GetParam().code);
    EXPECT_EQ(takeMessages(), GetParam().messages);
    EXPECT_TRUE(outputs.areUntouched());
}

using Context = ZAVHwCtx*;
constexpr const char* kName = "ZAV_hw_get_group_name";
constexpr const char* kInstances = "ZAV_hw_get_group_instances";
constexpr const char* kFields = "ZAV_hw_get_fields";
constexpr const char* kValue = "ZAV_hw_get_value";

auto nameOf(const QueryCase& query) {
    return std::string(query.name);
}

// Calls that differ only in their arguments.
auto groupName(int group) {
    return [=](Context context, Outputs& out) { return ZAV_hw_get_group_name(context, group, &out.text); };
}
auto groupInstances(int group) {
    return [=](Context context, Outputs& out) {
        return ZAV_hw_get_group_instances(context, group, &out.number);
    };
}
auto fieldNames(int group, int instance) {
    return [=](Context context, Outputs& out) {
        return ZAV_hw_get_fields(context, group, instance, &out.names, &out.number);
    };
}
auto fieldValue(int group, int instance, const wchar_t* field) {
    return [=](Context context, Outputs& out) {
        return ZAV_hw_get_value(context, group, instance, field, &out.text);
    };
}

INSTANTIATE_TEST_SUITE_P(
    ReturnCode, HWRefusalTest,
    testing::Values(
        QueryCase{"OfANullContext",
                  State::Unscanned,
                  [](Context, Outputs& out) { return ZAV_hw_get_returncode(nullptr, &out.number); },
                  3,
                  {}},
        QueryCase{"OfANullContextBeforeANullPointer",
                  State::Unscanned,
                  [](Context, Outputs&) { return ZAV_hw_get_returncode(nullptr, nullptr); },
                  3,
                  {}},
        QueryCase{"IntoANullPointer",
                  State::Scanned,
                  [](Context context, Outputs&) { return ZAV_hw_get_returncode(context, nullptr); },
                  109,
                  {}}),
    [](const auto& test) { return nameOf(test.param); });

INSTANTIATE_TEST_SUITE_P(
    GroupName, HWRefusalTest,
    testing::Values(
        QueryCase{"OfANullContext",
                  State::Unscanned,
                  [](Context, Outputs& out) { return ZAV_hw_get_group_name(nullptr, 99, &out.text); },
                  3,
                  {}},
        QueryCase{"Of0", State::Unscanned, groupName(0), 101, {}},
        QueryCase{"Of52", State::Unscanned, groupName(52), 101, {}},
        QueryCase{"OfMinus3", State::Unscanned, groupName(-3), 101, {}},
        QueryCase{
            "OfTheGap17", State::Unscanned, groupName(17), 101, {{2, 3, kName, "Retrieving group id [17]"}}},
        QueryCase{
            "OfTheGap18", State::Scanned, groupName(18), 101, {{2, 3, kName, "Retrieving group id [18]"}}},
        QueryCase{
            "OfTheGap33", State::Unscanned, groupName(33), 101, {{2, 3, kName, "Retrieving group id [33]"}}},
        QueryCase{"IntoANullPointerIsCheckedLast",
                  State::Unscanned,
                  [](Context context, Outputs&) { return ZAV_hw_get_group_name(context, 17, nullptr); },
                  101,
                  {{2, 3, kName, "Retrieving group id [17]"}}},
        QueryCase{"IntoANullPointer",
                  State::Unscanned,
                  [](Context context, Outputs&) { return ZAV_hw_get_group_name(context, 4, nullptr); },
                  109,
                  {{2, 3, kName, "Retrieving group id [4]"}}}),
    [](const auto& test) { return nameOf(test.param); });

INSTANTIATE_TEST_SUITE_P(
    GroupInstances, HWRefusalTest,
    testing::Values(
        QueryCase{"OfANullContext",
                  State::Unscanned,
                  [](Context, Outputs&) { return ZAV_hw_get_group_instances(nullptr, 99, nullptr); },
                  3,
                  {}},
        QueryCase{"IntoANullPointerBeforeAnythingElse",
                  State::Unscanned,
                  [](Context context, Outputs&) { return ZAV_hw_get_group_instances(context, 99, nullptr); },
                  109,
                  {}},
        QueryCase{"BeforeAnyScan", State::Unscanned, groupInstances(3), 107, {}},
        QueryCase{"WithoutAScanBeforeTheGroup", State::Unscanned, groupInstances(99), 107, {}},
        QueryCase{"AfterAFailedScan", State::Failed, groupInstances(3), 107, {}},
        QueryCase{
            "OfNoGroup",
            State::Scanned,
            groupInstances(0),
            101,
            {{2, 3, kInstances, "Retrieving data for group [0]"}, {2, 3, kInstances, "Wrong group id [0]"}}},
        QueryCase{"OfAGroupBeyondTheLast",
                  State::Scanned,
                  groupInstances(52),
                  101,
                  {{2, 3, kInstances, "Retrieving data for group [52]"},
                   {2, 3, kInstances, "Wrong group id [52]"}}},
        QueryCase{"OfAGroupThatIsNotEnabled",
                  State::Scanned,
                  groupInstances(5),
                  108,
                  {{2, 3, kInstances, "Retrieving data for group [5]"},
                   {0, 3, kInstances, "Wrong group id [5] - group not enabled"}}}),
    [](const auto& test) { return nameOf(test.param); });

Messages fieldsRefused(const std::string& where, const std::string& message) {
    return {{2, 3, kFields, "Retrieving fields  from " + where}, {0, 3, kFields, message}};
}

INSTANTIATE_TEST_SUITE_P(
    Fields, HWRefusalTest,
    testing::Values(
        QueryCase{"OfANullContext",
                  State::Unscanned,
                  [](Context, Outputs&) { return ZAV_hw_get_fields(nullptr, 99, -1, nullptr, nullptr); },
                  3,
                  {}},
        QueryCase{"IntoANullArrayIsSaidToBeRetrieved",
                  State::Unscanned,
                  [](Context context, Outputs& out) {
                      return ZAV_hw_get_fields(context, 4, 0, nullptr, &out.number);
                  },
                  109,
                  {{2, 3, kFields, "Retrieving fields  from group [4] instance [0]"}}},
        QueryCase{"IntoANullCount",
                  State::Scanned,
                  [](Context context, Outputs& out) {
                      return ZAV_hw_get_fields(context, 99, -7, &out.names, nullptr);
                  },
                  109,
                  {{2, 3, kFields, "Retrieving fields  from group [99] instance [-7]"}}},
        QueryCase{"BeforeAnyScanBeforeTheGroup", State::Unscanned, fieldNames(99, 0), 107,
                  fieldsRefused("group [99] instance [0]", "Wrong returncode of previous scan [-1]")},
        QueryCase{"AfterAFailedScan", State::Failed, fieldNames(3, 0), 107,
                  fieldsRefused("group [3] instance [0]", "Wrong returncode of previous scan [9]")},
        QueryCase{"OfNoGroup", State::Scanned, fieldNames(0, 0), 101,
                  fieldsRefused("group [0] instance [0]", "Wrong group [0]")},
        QueryCase{"OfAGroupBeyondTheLast", State::Scanned, fieldNames(52, -1), 101,
                  fieldsRefused("group [52] instance [-1]", "Wrong group [52]")},
        QueryCase{"OfAGroupThatIsNotEnabledBeforeTheInstance", State::Scanned, fieldNames(5, 9), 108,
                  fieldsRefused("group [5] instance [9]", "Wrong group [5] - group not enabled")},
        QueryCase{"OfANegativeInstance", State::Scanned, fieldNames(3, -1), 105,
                  fieldsRefused("group [3] instance [-1]", "Wrong instance [-1]")},
        QueryCase{"OfAnInstanceBeyondTheLast", State::Scanned, fieldNames(3, 2), 105,
                  fieldsRefused("group [3] instance [2]", "Wrong instance [2]")},
        QueryCase{"OfAGroupWithoutInstances", State::Scanned, fieldNames(4, 0), 105,
                  fieldsRefused("group [4] instance [0]", "Wrong instance [0]")},
        QueryCase{"OfTheGap17", State::Scanned, fieldNames(17, 0), 105,
                  fieldsRefused("group [17] instance [0]", "Wrong instance [0]")}),
    [](const auto& test) { return nameOf(test.param); });

Messages valueRefused(const std::string& where, int level, const std::string& message) {
    return {{2, 3, kValue, "Retrieving field " + where}, {level, 3, kValue, message}};
}

INSTANTIATE_TEST_SUITE_P(
    Value, HWRefusalTest,
    testing::Values(
        QueryCase{"OfANullContext",
                  State::Unscanned,
                  [](Context, Outputs&) { return ZAV_hw_get_value(nullptr, 99, -1, nullptr, nullptr); },
                  3,
                  {}},
        QueryCase{
            "IntoANullPointer",
            State::Unscanned,
            [](Context context, Outputs&) { return ZAV_hw_get_value(context, 99, -1, L"Slot", nullptr); },
            109,
            {}},
        QueryCase{"OfANullField", State::Scanned, fieldValue(4, 0, nullptr), 109, {}},
        QueryCase{"BeforeAnyScanBeforeTheGroup",
                  State::Unscanned,
                  fieldValue(99, 2, L"Slot"),
                  107,
                  {{2, 3, kValue, "Retrieving field [Slot] from group [99] instance [2]"}}},
        QueryCase{"AfterAFailedScan",
                  State::Failed,
                  fieldValue(3, 0, L"Slot"),
                  107,
                  {{2, 3, kValue, "Retrieving field [Slot] from group [3] instance [0]"}}},
        QueryCase{"OfNoGroup", State::Scanned, fieldValue(-1, 0, L"Slot"), 101,
                  valueRefused("[Slot] from group [-1] instance [0]", 2, "No such group [-1]")},
        QueryCase{"OfAGroupBeyondTheLast", State::Scanned, fieldValue(52, -1, L"Slot"), 101,
                  valueRefused("[Slot] from group [52] instance [-1]", 2, "No such group [52]")},
        QueryCase{
            "OfAGroupThatIsNotEnabledBeforeTheInstance", State::Scanned, fieldValue(5, 9, L"Slot"), 108,
            valueRefused("[Slot] from group [5] instance [9]", 2, "Wrong group [5] - group not enabled")},
        QueryCase{
            "OfANegativeInstance", State::Scanned, fieldValue(3, -1, L"Slot"), 105,
            valueRefused("[Slot] from group [3] instance [-1]", 2, "Wrong instance [-1] for group [3]")},
        QueryCase{"OfAnInstanceBeyondTheLast", State::Scanned, fieldValue(3, 2, L"Slot"), 105,
                  valueRefused("[Slot] from group [3] instance [2]", 2, "Wrong instance [2] for group [3]")},
        QueryCase{"OfAGroupWithoutInstances", State::Scanned, fieldValue(4, 0, L"Slot"), 105,
                  valueRefused("[Slot] from group [4] instance [0]", 2, "Wrong instance [0] for group [4]")},
        QueryCase{"OfAnUnknownField", State::Scanned, fieldValue(3, 0, L"Size"), 106,
                  valueRefused("[Size] from group [3] instance [0]", 1, "Field not found [Size]")},
        QueryCase{"OfAFieldInAnotherCase", State::Scanned, fieldValue(3, 0, L"slot"), 106,
                  valueRefused("[slot] from group [3] instance [0]", 1, "Field not found [slot]")},
        QueryCase{"OfTheBeginningOfAField", State::Scanned, fieldValue(3, 0, L"Slo"), 106,
                  valueRefused("[Slo] from group [3] instance [0]", 1, "Field not found [Slo]")},
        QueryCase{"OfAnEmptyField", State::Scanned, fieldValue(3, 0, L""), 106,
                  valueRefused("[] from group [3] instance [0]", 1, "Field not found []")},
        QueryCase{"OfAnInstanceWithoutFields", State::Scanned, fieldValue(3, 1, L"Slot"), 106,
                  valueRefused("[Slot] from group [3] instance [1]", 1, "Field not found [Slot]")}),
    [](const auto& test) { return nameOf(test.param); });

TEST_F(HWQueryTest, TheReturnCodeIsReturnedSilently) {
    int code = 0;
    EXPECT_EQ(ZAV_hw_get_returncode(context(), &code), 0);
    EXPECT_EQ(code, -1);
    enter(State::Scanned);
    EXPECT_EQ(returnCode(), 0);
    enter(State::Failed);
    EXPECT_EQ(returnCode(), 9);
    EXPECT_EQ(takeMessages(), Messages());
}

TEST_F(HWQueryTest, AGroupsNameNeedsNeitherAScanNorTheGroupEnabled) {
    for (const auto& [id, name] :
         {std::pair(1, L"ComponentID"), {4, L"OperatingSystem"}, {5, L"Storage"}, {51, L"IPv6Address"}}) {
        const wchar_t* found = nullptr;
        takeMessages();
        EXPECT_EQ(ZAV_hw_get_group_name(context(), id, &found), 0);
        EXPECT_STREQ(found, name);
        EXPECT_EQ(takeMessages(),
                  (Messages{{2, 3, kName, "Retrieving group id [" + std::to_string(id) + "]"}}));
    }
}

TEST_F(HWQueryTest, AGroupsNameOutlivesTheContext) {
    const wchar_t* name = nullptr;
    ASSERT_EQ(ZAV_hw_get_group_name(context(), 4, &name), 0);
    close();
    EXPECT_STREQ(name, L"OperatingSystem");
}

TEST_F(HWQueryTest, InstancesAreCounted) {
    enter(State::Scanned);
    EXPECT_EQ(instances(3), 2);
    EXPECT_EQ(takeMessages(), (Messages{{2, 3, kInstances, "Retrieving data for group [3]"},
                                        {2, 3, kInstances, "Size of group [3] = [2]"}}));
    EXPECT_EQ(instances(4), 0);
    EXPECT_EQ(instances(17), 0);
}

TEST_F(HWQueryTest, FieldNamesComeInTheOrderOfTheOutputWithTheirDuplicates) {
    enter(State::Scanned);
    EXPECT_EQ(fields(3, 0), (std::vector<std::wstring>{L"Slot", L"Slot", L"Empty"}));
    EXPECT_EQ(takeMessages(), (Messages{{2, 3, kFields, "Retrieving fields  from group [3] instance [0]"},
                                        {2, 3, kFields, "Retrieved 3 fields"}}));
}

TEST_F(HWQueryTest, TheSameArrayIsReturnedEachTime) {
    enter(State::Scanned);
    const wchar_t** first = nullptr;
    const wchar_t** second = nullptr;
    int count = 0;
    ASSERT_EQ(ZAV_hw_get_fields(context(), 3, 0, &first, &count), 0);
    ASSERT_EQ(ZAV_hw_get_fields(context(), 3, 0, &second, &count), 0);
    EXPECT_NE(first, nullptr);
    EXPECT_EQ(first, second);
}

TEST_F(HWQueryTest, AnInstanceWithoutFieldsHasANullArray) {
    enter(State::Scanned);
    Outputs out;
    EXPECT_EQ(ZAV_hw_get_fields(context(), 3, 1, &out.names, &out.number), 0);
    EXPECT_EQ(out.names, nullptr);
    EXPECT_EQ(out.number, 0);
    EXPECT_EQ(takeMessages().back(), (zavtest::Message{2, 3, kFields, "Retrieved 0 fields"}));
}

TEST_F(HWQueryTest, AValueIsThatOfTheFirstFieldOfTheName) {
    enter(State::Scanned);
    EXPECT_EQ(value(3, 0, L"Slot"), L"1");
    EXPECT_EQ(takeMessages(), (Messages{{2, 3, kValue, "Retrieving field [Slot] from group [3] instance [0]"},
                                        {2, 3, kValue, "Filed [Slot] found with value [1]"}}));
}

TEST_F(HWQueryTest, AFieldWithoutTextHasTheEmptyValue) {
    enter(State::Scanned);
    EXPECT_EQ(value(3, 0, L"Empty"), L"");
    EXPECT_EQ(takeMessages().back(), (zavtest::Message{2, 3, kValue, "Filed [Empty] found with value []"}));
}

TEST_F(HWQueryTest, AGroupThatIsDisabledAfterTheScanIsRefusedForTheScan) {
    enter(State::Scanned);
    disable(3);
    int count = 0;
    EXPECT_EQ(ZAV_hw_get_group_instances(context(), 3, &count), 107);
}

TEST_F(HWQueryTest, QueriesChangeNothing) {
    enter(State::Scanned);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(instances(3), 2);
        EXPECT_EQ(fields(3, 0).size(), 3U);
        EXPECT_EQ(value(3, 0, L"Slot"), L"1");
        EXPECT_EQ(returnCode(), 0);
    }
}

}  // namespace
}  // namespace hwtest
