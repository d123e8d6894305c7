// Errors of the getters: the checks of each in order, with code, message and level.
#include <functional>

#include "tests/sw/QueryTest.h"

namespace swtest {
namespace {

struct QueryCase {
    const char* name;
    State state;
    std::function<int(const Given&, Outputs&)> query;
    int code;
    Messages messages;
};

class SWRefusalTest : public SWQueryTest, public testing::WithParamInterface<QueryCase> {};

TEST_P(SWRefusalTest, HasItsCodeAndMessagesAndTouchesNoOutput) {
    enter(GetParam().state);
    Outputs outputs;
    EXPECT_EQ(GetParam().query(given(), outputs), GetParam().code);
    EXPECT_EQ(takeMessages(), GetParam().messages);
    EXPECT_TRUE(outputs.areUntouched());
}

auto nameOf(const testing::TestParamInfo<QueryCase>& test) {
    return std::string(test.param.name);
}

constexpr const char* kResults = "ZAV_sw_get_results";
constexpr const char* kFind = "ZAV_sw_find_results_by_guid";
const Messages kNoResults = {{0, 4, kResults, "ERROR: Wrong last return code"}};
const Messages kWrongResult = {{0, 4, kResults, "ERROR: Wrong result"}};

int getResults(const Given& given, Outputs& out) {
    return ZAV_sw_get_results(given.context, &out.results, &out.number);
}

INSTANTIATE_TEST_SUITE_P(
    Results, SWRefusalTest,
    testing::Values(QueryCase{"OfANullContext",
                              State::New,
                              [](const Given&, Outputs&) {
                                  return ZAV_sw_get_results(nullptr, nullptr, nullptr);
                              },
                              3,
                              {}},
                    QueryCase{"BeforeAnyEvaluation", State::New, getResults, 206, kNoResults},
                    QueryCase{"AfterAFailedEvaluation", State::Failed, getResults, 206, kNoResults},
                    QueryCase{"AfterAnOption", State::Changed, getResults, 206, kNoResults},
                    QueryCase{"WithoutResultsBeforeTheOutputs", State::New,
                              [](const Given& given, Outputs&) {
                                  return ZAV_sw_get_results(given.context, nullptr, nullptr);
                              },
                              206, kNoResults},
                    QueryCase{"IntoANullArray",
                              State::Evaluated,
                              [](const Given& given, Outputs& out) {
                                  return ZAV_sw_get_results(given.context, nullptr, &out.number);
                              },
                              209,
                              {{2, 4, kResults, "Wrong table pointer"}}},
                    QueryCase{"IntoANullCount",
                              State::Evaluated,
                              [](const Given& given, Outputs& out) {
                                  return ZAV_sw_get_results(given.context, &out.results, nullptr);
                              },
                              209,
                              {{2, 4, kResults, "Wrong table pointer"}}}),
    nameOf);

int findOne(const Given& given, Outputs& out, const wchar_t* guid) {
    return ZAV_sw_find_result_by_guid(given.context, guid, &out.result);
}

INSTANTIATE_TEST_SUITE_P(
    FindOne, SWRefusalTest,
    testing::Values(QueryCase{"OfANullContext",
                              State::New,
                              [](const Given&, Outputs&) {
                                  return ZAV_sw_find_result_by_guid(nullptr, nullptr, nullptr);
                              },
                              3,
                              {}},
                    QueryCase{"IntoANullResultBeforeThereAreAny",
                              State::New,
                              [](const Given& given, Outputs&) {
                                  return ZAV_sw_find_result_by_guid(given.context, L"a", nullptr);
                              },
                              209,
                              {}},
                    QueryCase{"OfANullIdentifierBeforeThereAreAny",
                              State::New,
                              [](const Given& given, Outputs& out) { return findOne(given, out, nullptr); },
                              209,
                              {}},
                    QueryCase{"BeforeAnyEvaluation",
                              State::New,
                              [](const Given& given, Outputs& out) { return findOne(given, out, L"a"); },
                              210,
                              {}},
                    QueryCase{"AfterAFailedEvaluation",
                              State::Failed,
                              [](const Given& given, Outputs& out) { return findOne(given, out, L"a"); },
                              210,
                              {}},
                    QueryCase{"OfAnUnknownIdentifier",
                              State::Evaluated,
                              [](const Given& given, Outputs& out) { return findOne(given, out, L"A"); },
                              210,
                              {}},
                    QueryCase{"OfAnEmptyIdentifier",
                              State::Evaluated,
                              [](const Given& given, Outputs& out) { return findOne(given, out, L""); },
                              210,
                              {}}),
    nameOf);

int findAll(const Given& given, Outputs& out, const wchar_t* guid) {
    return ZAV_sw_find_results_by_guid(given.context, guid, &out.results, &out.count);
}

INSTANTIATE_TEST_SUITE_P(
    FindAll, SWRefusalTest,
    testing::Values(QueryCase{"OfANullContext",
                              State::New,
                              [](const Given&, Outputs&) {
                                  return ZAV_sw_find_results_by_guid(nullptr, nullptr, nullptr, nullptr);
                              },
                              3,
                              {}},
                    QueryCase{"IntoANullArray",
                              State::New,
                              [](const Given& given, Outputs& out) {
                                  return ZAV_sw_find_results_by_guid(given.context, nullptr, nullptr,
                                                                     &out.count);
                              },
                              209,
                              {{2, 4, kFind, "Wrong pointer"}}},
                    QueryCase{"IntoANullCount",
                              State::Evaluated,
                              [](const Given& given, Outputs& out) {
                                  return ZAV_sw_find_results_by_guid(given.context, L"a", &out.results,
                                                                     nullptr);
                              },
                              209,
                              {{2, 4, kFind, "Wrong pointer"}}},
                    QueryCase{"OfANullIdentifier",
                              State::Evaluated,
                              [](const Given& given, Outputs& out) { return findAll(given, out, nullptr); },
                              209,
                              {}},
                    QueryCase{"BeforeAnyEvaluation",
                              State::New,
                              [](const Given& given, Outputs& out) { return findAll(given, out, L"a"); },
                              210,
                              {{2, 4, kFind, "generating new results"}}},
                    QueryCase{"OfAnUnknownIdentifier",
                              State::Evaluated,
                              [](const Given& given, Outputs& out) { return findAll(given, out, L"aa"); },
                              210,
                              {{2, 4, kFind, "generating new results"}}}),
    nameOf);

auto valueOf(const wchar_t* name) {
    return [name](const Given& given, Outputs& out) {
        return ZAV_sw_get_value(given.context, given.result, name, &out.text);
    };
}

INSTANTIATE_TEST_SUITE_P(
    Value, SWRefusalTest,
    testing::Values(QueryCase{"OfANullContext",
                              State::New,
                              [](const Given&, Outputs&) {
                                  return ZAV_sw_get_value(nullptr, nullptr, nullptr, nullptr);
                              },
                              3,
                              {}},
                    QueryCase{"WithoutResultsBeforeAnyPointer",
                              State::Changed,
                              [](const Given& given, Outputs&) {
                                  return ZAV_sw_get_value(given.context, nullptr, nullptr, nullptr);
                              },
                              206,
                              {}},
                    QueryCase{"OfANullResultBeforeTheOutput",
                              State::Evaluated,
                              [](const Given& given, Outputs&) {
                                  return ZAV_sw_get_value(given.context, nullptr, nullptr, nullptr);
                              },
                              207,
                              {}},
                    QueryCase{"IntoANullPointerBeforeTheName",
                              State::Evaluated,
                              [](const Given& given, Outputs&) {
                                  return ZAV_sw_get_value(given.context, given.result, nullptr, nullptr);
                              },
                              209,
                              {}},
                    QueryCase{"OfANullName", State::Evaluated, valueOf(nullptr), 208, {}},
                    QueryCase{"OfAnUnknownName", State::Evaluated, valueOf(L"w"), 208, {}},
                    QueryCase{"OfANameInAnotherCase", State::Evaluated, valueOf(L"V"), 208, {}},
                    QueryCase{"OfAnEmptyName", State::Evaluated, valueOf(L""), 208, {}}),
    nameOf);

INSTANTIATE_TEST_SUITE_P(
    Variables, SWRefusalTest,
    testing::Values(QueryCase{"OfANullContext",
                              State::New,
                              [](const Given&, Outputs&) {
                                  return ZAV_sw_get_variables(nullptr, nullptr, nullptr, nullptr);
                              },
                              3,
                              {}},
                    QueryCase{"WithoutResultsBeforeAnyPointer",
                              State::New,
                              [](const Given& given, Outputs&) {
                                  return ZAV_sw_get_variables(given.context, nullptr, nullptr, nullptr);
                              },
                              206,
                              {}},
                    QueryCase{"IntoANullCountBeforeTheResult",
                              State::Evaluated,
                              [](const Given& given, Outputs& out) {
                                  return ZAV_sw_get_variables(given.context, nullptr, &out.texts, nullptr);
                              },
                              209,
                              {}},
                    QueryCase{"IntoANullArrayBeforeTheResult",
                              State::Evaluated,
                              [](const Given& given, Outputs& out) {
                                  return ZAV_sw_get_variables(given.context, nullptr, nullptr, &out.number);
                              },
                              209,
                              {}},
                    QueryCase{"OfANullResult",
                              State::Evaluated,
                              [](const Given& given, Outputs& out) {
                                  return ZAV_sw_get_variables(given.context, nullptr, &out.texts,
                                                              &out.number);
                              },
                              207,
                              {}}),
    nameOf);

// Two getters have the same checks.
using TextGetter = int (*)(ZAVSwCtx*, ZAVSwResult*, const wchar_t**);

std::vector<QueryCase> textRefusals(TextGetter get) {
    return {
        {"OfANullContext",
         State::New,
         [=](const Given&, Outputs&) { return get(nullptr, nullptr, nullptr); },
         3,
         {}},
        {"WithoutResultsBeforeAnyPointer",
         State::Failed,
         [=](const Given& given, Outputs&) { return get(given.context, nullptr, nullptr); },
         206,
         {}},
        {"IntoANullPointerBeforeTheResult",
         State::Evaluated,
         [=](const Given& given, Outputs&) { return get(given.context, nullptr, nullptr); },
         209,
         {}},
        {"OfANullResult", State::Evaluated,
         [=](const Given& given, Outputs& out) { return get(given.context, nullptr, &out.text); }, 207,
         kWrongResult},
    };
}

INSTANTIATE_TEST_SUITE_P(Metadata, SWRefusalTest, testing::ValuesIn(textRefusals(ZAV_sw_get_metadata)),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(Guid, SWRefusalTest, testing::ValuesIn(textRefusals(ZAV_sw_get_guid)), nameOf);

const Messages kWrongWarnings = {{2, 4, "ZAV_sw_get_warnings", "Retrieving Warnings"},
                                 {2, 4, "ZAV_sw_get_warnings", "Error: wrong pointer"}};

INSTANTIATE_TEST_SUITE_P(
    Others, SWRefusalTest,
    testing::Values(
        QueryCase{"WarningsOfANullContext",
                  State::New,
                  [](const Given&, Outputs&) { return ZAV_sw_get_warnings(nullptr, nullptr, nullptr); },
                  3,
                  {}},
        QueryCase{"WarningsIntoANullArray", State::New,
                  [](const Given& given, Outputs& out) {
                      return ZAV_sw_get_warnings(given.context, nullptr, &out.number);
                  },
                  209, kWrongWarnings},
        QueryCase{"WarningsIntoANullCount", State::Evaluated,
                  [](const Given& given, Outputs& out) {
                      return ZAV_sw_get_warnings(given.context, &out.texts, nullptr);
                  },
                  209, kWrongWarnings},
        QueryCase{"ReturnCodeOfANullContext",
                  State::New,
                  [](const Given&, Outputs&) { return ZAV_sw_get_returncode(nullptr, nullptr); },
                  3,
                  {}},
        QueryCase{"ReturnCodeIntoANullPointer",
                  State::Evaluated,
                  [](const Given& given, Outputs&) { return ZAV_sw_get_returncode(given.context, nullptr); },
                  209,
                  {{2, 4, "ZAV_sw_get_returncode", "Wrong pointer for RC"}}}),
    nameOf);

}  // namespace
}  // namespace swtest
