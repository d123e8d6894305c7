// The getters: each one's checks in their order, with code, message and level.
#include "sw/SWQueries.h"

#include <functional>

#include "tests/sw/Evaluation.h"

namespace swtest {
namespace {

const wchar_t* const untouchedText = L"untouched";
constexpr int untouchedNumber = 4711;

// The outputs of a query, which is to write them on success only.
struct Outputs {
    ZAVSwResult* const untouchedResult = reinterpret_cast<ZAVSwResult*>(this);
    int number = untouchedNumber;
    unsigned int count = untouchedNumber;
    const wchar_t* text = untouchedText;
    const wchar_t** texts = &text;
    ZAVSwResult* result = untouchedResult;
    ZAVSwResult** results = &result;

    bool areUntouched() const {
        return number == untouchedNumber && count == untouchedNumber && text == untouchedText &&
               texts == &text && result == untouchedResult && results == &result;
    }
};

// In the states of a context that the checks tell apart.
enum class State { New, Evaluated, Failed, Changed };

// What a query is given beside its outputs.
struct Given {
    ZAVSwCtx* context;
    ZAVSwResult* result;  // of the last evaluation that had one, else null
};

struct QueryCase {
    const char* name;
    State state;
    std::function<int(const Given&, Outputs&)> query;
    int code;
    Messages messages;
};

class SWQueryTest : public EvaluationTest {
  protected:
    SWQueryTest() {
        scannerWrites(
            "<QEL><MatchedSignature guid='a' name='n'><Variable name='v' value='1'/>"
            "<Variable name='Empty'/><Metadata>m</Metadata></MatchedSignature>"
            "<MatchedSignature guid='b'/><MatchedSignature guid='a'/></QEL>",
            "<Events><Event>1</Event><Event>2</Event></Events>");
    }

    void enter(State state) {
        if (state == State::New) return;
        ASSERT_EQ(run(), 0);
        first_ = results().at(0);
        if (state == State::Changed) {
            ASSERT_EQ(ZAV_sw_setopt_variable(context(), L"a", L"b", L"c"), 0);
        }
        if (state == State::Failed) {
            put("status", "9");
            first_ = nullptr;
            ASSERT_EQ(run(), 203);
        }
        takeMessages();
    }

    Given given() const { return {context(), first_}; }

    ZAVSwResult* first_ = nullptr;
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

// The two getters that check alike.
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

TEST_F(SWQueryTest, AllResultsComeInOrderInTheSameArrayEachTime) {
    enter(State::Evaluated);
    ZAVSwResult** all = nullptr;
    ZAVSwResult** again = nullptr;
    int count = 0;
    EXPECT_EQ(ZAV_sw_get_results(context(), &all, &count), 0);
    EXPECT_EQ(takeMessages(), (Messages{{2, 4, kResults, "Requesting all results. Size: 3"}}));
    EXPECT_EQ(count, 3);
    EXPECT_EQ(ZAV_sw_get_results(context(), &again, &count), 0);
    EXPECT_EQ(all, again);
    EXPECT_EQ(guids(), (WideTexts{L"a", L"b", L"a"}));
}

TEST_F(SWQueryTest, NoResultsAreANullArray) {
    scannerWrites("<QEL/>");
    ASSERT_EQ(run(), 0);
    takeMessages();
    ZAVSwResult* one = nullptr;
    ZAVSwResult** all = &one;
    int count = 7;
    EXPECT_EQ(ZAV_sw_get_results(context(), &all, &count), 0);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(all, nullptr);
    EXPECT_EQ(takeMessages(), (Messages{{2, 4, kResults, "Requesting all results. Size: 0"},
                                        {2, 4, kResults, "No results, passing NULL"}}));
}

TEST_F(SWQueryTest, TheFirstResultOfAnIdentifierIsFoundSilently) {
    enter(State::Evaluated);
    const std::vector<ZAVSwResult*> all = results();
    takeMessages();
    EXPECT_EQ(find(L"a"), all[0]);
    EXPECT_EQ(find(L"b"), all[1]);
    EXPECT_EQ(takeMessages(), Messages());
}

TEST_F(SWQueryTest, AllResultsOfAnIdentifierAreCollectedOnce) {
    enter(State::Evaluated);
    const std::vector<ZAVSwResult*> all = results();
    takeMessages();
    ZAVSwResult** found = nullptr;
    ZAVSwResult** again = nullptr;
    unsigned int count = 0;
    EXPECT_EQ(ZAV_sw_find_results_by_guid(context(), L"a", &found, &count), 0);
    ASSERT_EQ(count, 2U);
    EXPECT_EQ(found[0], all[0]);
    EXPECT_EQ(found[1], all[2]);
    EXPECT_EQ(takeMessages(), (Messages{{2, 4, kFind, "generating new results"}}));
    count = 0;
    EXPECT_EQ(ZAV_sw_find_results_by_guid(context(), L"a", &again, &count), 0);
    EXPECT_EQ(again, found);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(takeMessages(), (Messages{{2, 4, kFind, "Using cached results"}}));
    EXPECT_EQ(ZAV_sw_find_results_by_guid(context(), L"b", &again, &count), 0);
    EXPECT_EQ(count, 1U);
    EXPECT_EQ(again[0], all[1]);
    EXPECT_EQ(takeMessages(), (Messages{{2, 4, kFind, "generating new results"}}));
}

TEST_F(SWQueryTest, AMissIsNeverCached) {
    enter(State::Evaluated);
    for (int i = 0; i < 2; ++i) {
        Outputs outputs;
        EXPECT_EQ(ZAV_sw_find_results_by_guid(context(), L"none", &outputs.results, &outputs.count), 210);
        EXPECT_TRUE(outputs.areUntouched());
        EXPECT_EQ(takeMessages(), (Messages{{2, 4, kFind, "generating new results"}}));
    }
    const auto entry = context()->guidResults.find(L"none");
    ASSERT_NE(entry, context()->guidResults.end());
    EXPECT_EQ(entry->second.results, nullptr);
}

TEST_F(SWQueryTest, LookupsAndWarningsAnswerInAnyState) {
    enter(State::Changed);
    EXPECT_EQ(find(L"a"), first_);
    ZAVSwResult** found = nullptr;
    unsigned int count = 0;
    EXPECT_EQ(ZAV_sw_find_results_by_guid(context(), L"a", &found, &count), 0);
    EXPECT_EQ(count, 2U);
    EXPECT_EQ(warnings().size(), 2U);
}

TEST_F(SWQueryTest, EachTextOfAResultIsHandedOut) {
    enter(State::Evaluated);
    EXPECT_EQ(variables(first_), (Variables{{L"Empty", L""}, {L"v", L"1"}}));
    EXPECT_EQ(takeMessages(),
              (Messages{{2, 4, "ZAV_sw_get_variables", "Requesting all variables for result [SIZE: 2]"}}));
    EXPECT_EQ(metadata(first_), L"<Metadata>m</Metadata>");
    EXPECT_EQ(guids().at(0), L"a");
}

TEST_F(SWQueryTest, AResultWithoutAnythingHasEmptyTextsAndNoNames) {
    scannerWrites("<QEL><MatchedSignature/></QEL>");
    ASSERT_EQ(run(), 0);
    ZAVSwResult* const result = results().at(0);
    takeMessages();
    const wchar_t* text = nullptr;
    const wchar_t** names = &text;
    int count = 7;
    EXPECT_EQ(ZAV_sw_get_variables(context(), result, &names, &count), 0);
    EXPECT_EQ(names, nullptr);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(takeMessages(),
              (Messages{{2, 4, "ZAV_sw_get_variables", "Requesting all variables for result [SIZE: 0]"}}));
    EXPECT_EQ(metadata(result), L"");
    EXPECT_EQ(guids(), WideTexts{L""});
    EXPECT_EQ(ZAV_sw_get_value(context(), result, L"v", &text), 208);
    EXPECT_EQ(text, nullptr) << "an output is written on success only";
}

TEST_F(SWQueryTest, WarningsAreTheSameArrayEachTime) {
    enter(State::Evaluated);
    EXPECT_EQ(warnings(), (WideTexts{L"<Event>1</Event>", L"<Event>2</Event>"}));
    EXPECT_EQ(takeMessages(), (Messages{{2, 4, "ZAV_sw_get_warnings", "Retrieving Warnings"}}));
    const wchar_t** first = nullptr;
    const wchar_t** second = nullptr;
    int count = 0;
    EXPECT_EQ(ZAV_sw_get_warnings(context(), &first, &count), 0);
    EXPECT_EQ(ZAV_sw_get_warnings(context(), &second, &count), 0);
    EXPECT_EQ(first, second);
}

TEST_F(SWQueryTest, WithoutWarningsTheOutputsStayAsTheyWere) {
    for (const bool evaluated : {false, true}) {
        scannerWrites("<QEL/>", "<Events/>");
        if (evaluated) {
            ASSERT_EQ(run(), 0);
        }
        takeMessages();
        Outputs outputs;
        EXPECT_EQ(ZAV_sw_get_warnings(context(), &outputs.texts, &outputs.number), 0);
        EXPECT_TRUE(outputs.areUntouched());
        EXPECT_EQ(takeMessages(), (Messages{{2, 4, "ZAV_sw_get_warnings", "Retrieving Warnings"}}));
    }
}

TEST_F(SWQueryTest, TheReturnCodeIsToldInAnyState) {
    const auto told = [this] { return takeTextsOf("ZAV_sw_get_returncode"); };
    EXPECT_EQ(returnCode(), -1);
    EXPECT_EQ(told(), Texts{"Returning previous rc [-1] [FALSE]"});
    enter(State::Evaluated);
    EXPECT_EQ(returnCode(), 0);
    EXPECT_EQ(told(), Texts{"Returning previous rc [0] [TRUE]"});
    enter(State::Failed);
    EXPECT_EQ(returnCode(), 9);
    EXPECT_EQ(told(), Texts{"Returning previous rc [9] [FALSE]"});
}

TEST_F(SWQueryTest, DeletedResultsLeaveNothingAndCanBeDeletedAgain) {
    enter(State::Evaluated);
    ZAVSwResult** found = nullptr;
    unsigned int count = 0;
    ASSERT_EQ(ZAV_sw_find_results_by_guid(context(), L"a", &found, &count), 0);
    for (int i = 0; i < 2; ++i) {
        zav::SW_deleteResults(context());
        EXPECT_TRUE(context()->results.empty());
        EXPECT_EQ(context()->resultsArray, nullptr);
        EXPECT_TRUE(context()->guidResults.empty());
        EXPECT_TRUE(context()->warnings.empty());
        EXPECT_EQ(context()->warningsArray, nullptr);
        EXPECT_EQ(context()->returnCode, -1);
        EXPECT_EQ(find(L"a"), nullptr);
    }
    EXPECT_EQ(takeMessages().size(), 1U) << "only the look-up before told anything";
    zav::SW_deleteResults(nullptr);
}

TEST_F(SWQueryTest, NoGetterNeedsALogger) {
    enter(State::Evaluated);
    context()->log.reset();
    context()->tmpDir->silence();
    Outputs out;
    EXPECT_EQ(getResults(given(), out), 0);
    EXPECT_EQ(findAll(given(), out, L"a"), 0);
    EXPECT_EQ(findAll(given(), out, L"a"), 0);
    EXPECT_EQ(ZAV_sw_find_results_by_guid(context(), L"a", nullptr, nullptr), 209);
    EXPECT_EQ(ZAV_sw_get_results(context(), nullptr, nullptr), 209);
    EXPECT_EQ(ZAV_sw_get_variables(context(), first_, &out.texts, &out.number), 0);
    EXPECT_EQ(ZAV_sw_get_metadata(context(), nullptr, &out.text), 207);
    EXPECT_EQ(ZAV_sw_get_warnings(context(), nullptr, nullptr), 209);
    EXPECT_EQ(ZAV_sw_get_warnings(context(), &out.texts, &out.number), 0);
    EXPECT_EQ(ZAV_sw_get_returncode(context(), nullptr), 209);
    EXPECT_EQ(ZAV_sw_get_returncode(context(), &out.number), 0);
    context()->returnCode = 1;
    EXPECT_EQ(getResults(given(), out), 206);
}

}  // namespace
}  // namespace swtest
