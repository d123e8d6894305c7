#include "sw/ZAVSwResult.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>

namespace {

using Pairs = std::vector<std::pair<std::wstring, std::wstring>>;

Pairs pairsOf(const ZAVSwResult& result) {
    Pairs pairs;
    for (const zav::SWVariable& variable : result.variables)
        pairs.emplace_back(variable.name, variable.value);
    return pairs;
}

TEST(ZAVSwResult, IsEmptyAtFirst) {
    const ZAVSwResult result;
    EXPECT_STREQ(result.guid, L"");
    EXPECT_STREQ(result.name, L"");
    EXPECT_STREQ(result.metadata, L"");
    EXPECT_TRUE(result.variables.empty());
    EXPECT_EQ(result.variableNames, nullptr);
    EXPECT_EQ(result.nextOfGuid, nullptr);
    EXPECT_EQ(result.findValue(L""), nullptr);
}

TEST(ZAVSwResult, VariablesAreSortedByTheirCharactersCodes) {
    ZAVSwResult result;
    result.setVariables(
        {{L"b", L"1"}, {L"\U0001F600", L"2"}, {L"aa", L"3"}, {L"\u00E4", L"4"}, {L"a", L"5"}, {L"Z", L"6"}});
    EXPECT_EQ(pairsOf(result), (Pairs{{L"Z", L"6"},
                                      {L"a", L"5"},
                                      {L"aa", L"3"},
                                      {L"b", L"1"},
                                      {L"\u00E4", L"4"},
                                      {L"\U0001F600", L"2"}}));
}

TEST(ZAVSwResult, TheLastVariableOfANameIsKept) {
    ZAVSwResult result;
    result.setVariables({{L"b", L"1"}, {L"a", L"2"}, {L"b", L"3"}});
    EXPECT_EQ(pairsOf(result), (Pairs{{L"a", L"2"}, {L"b", L"3"}}));
    result.setVariables({{L"a", L"1"}, {L"a", L"2"}, {L"a", L"3"}});
    EXPECT_EQ(pairsOf(result), (Pairs{{L"a", L"3"}}));
    result.setVariables({{L"a", L"1"}, {L"b", L"2"}, {L"b", L"3"}});
    EXPECT_EQ(pairsOf(result), (Pairs{{L"a", L"1"}, {L"b", L"3"}}));
}

TEST(ZAVSwResult, AnyOrderGivesWhatAnOrderedMapWouldGive) {
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        Pairs texts;
        for (int i = 0; i < round % 40; ++i) {
            texts.emplace_back(std::to_wstring(random() % 20), std::to_wstring(i));
        }
        std::map<std::wstring, std::wstring> expected;
        std::vector<zav::SWVariable> variables;
        for (const auto& [name, value] : texts) {
            expected[name] = value;
            variables.push_back({name.c_str(), value.c_str()});
        }
        ZAVSwResult result;
        result.setVariables(variables);
        ASSERT_EQ(pairsOf(result), Pairs(expected.begin(), expected.end())) << round;
        for (const auto& [name, value] : expected)
            ASSERT_STREQ(result.findValue(name.c_str()), value.c_str());
    }
}

TEST(ZAVSwResult, ANameIsFoundOnlyAsItStands) {
    ZAVSwResult result;
    result.setVariables({{L"Name", L"1"}, {L"other", L""}});
    EXPECT_STREQ(result.findValue(L"Name"), L"1");
    EXPECT_STREQ(result.findValue(L"other"), L"");
    for (const wchar_t* const missing : {L"name", L"Nam", L"Names", L"", L"zzz"}) {
        EXPECT_EQ(result.findValue(missing), nullptr) << missing;
    }
}

TEST(ZAVSwResult, TheNamesPointAtTheNamesOfTheVariables) {
    ZAVSwResult result;
    result.setVariables({{L"b", L"1"}, {L"a", L"2"}});
    result.generateVariablesNames();
    for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(result.variableNames.get()[i], result.variables[i].name);
}

TEST(ZAVSwResult, WithoutVariablesThereAreNoNames) {
    ZAVSwResult result;
    result.generateVariablesNames();
    EXPECT_EQ(result.variableNames, nullptr);
}

}  // namespace
