// The results of the getters.
#include "sw/ZAVSwCtx.h"

#include "tests/sw/QueryTest.h"

namespace swtest {
namespace {

constexpr const char* kResults = "ZAV_sw_get_results";
constexpr const char* kFind = "ZAV_sw_find_results_by_guid";

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

TEST_F(SWQueryTest, EachTextOfAResultIsReturned) {
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

TEST_F(SWQueryTest, TheReturnCodeIsReturnedInAnyState) {
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
        EXPECT_EQ(context()->guidResults.find(L"a"), nullptr);
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
    EXPECT_EQ(ZAV_sw_get_results(context(), &out.results, &out.number), 0);
    EXPECT_EQ(ZAV_sw_find_results_by_guid(context(), L"a", &out.results, &out.count), 0);
    EXPECT_EQ(ZAV_sw_find_results_by_guid(context(), L"a", &out.results, &out.count), 0);
    EXPECT_EQ(ZAV_sw_find_results_by_guid(context(), L"a", nullptr, nullptr), 209);
    EXPECT_EQ(ZAV_sw_get_results(context(), nullptr, nullptr), 209);
    EXPECT_EQ(ZAV_sw_get_variables(context(), first_, &out.texts, &out.number), 0);
    EXPECT_EQ(ZAV_sw_get_metadata(context(), nullptr, &out.text), 207);
    EXPECT_EQ(ZAV_sw_get_warnings(context(), nullptr, nullptr), 209);
    EXPECT_EQ(ZAV_sw_get_warnings(context(), &out.texts, &out.number), 0);
    EXPECT_EQ(ZAV_sw_get_returncode(context(), nullptr), 209);
    EXPECT_EQ(ZAV_sw_get_returncode(context(), &out.number), 0);
    context()->returnCode = 1;
    EXPECT_EQ(ZAV_sw_get_results(context(), &out.results, &out.number), 206);
}

}  // namespace
}  // namespace swtest
