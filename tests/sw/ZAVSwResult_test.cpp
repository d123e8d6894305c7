#include "sw/ZAVSwResult.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>

namespace {

using Pairs = std::vector<std::pair<std::wstring, std::string>>;

Pairs pairsOf(const ZAVSwResult& result) {
    Pairs pairs;
    for (const zav::SWVariable& variable : result.variables)
        pairs.emplace_back(variable.name, variable.value);
    return pairs;
}

TEST(ZAVSwResult, IsEmptyAtFirst) {
    const ZAVSwResult result;
    EXPECT_STREQ(result.guid, "");
    EXPECT_STREQ(result.name, "");
    EXPECT_STREQ(result.metadata, L"");
    EXPECT_TRUE(result.variables.empty());
    EXPECT_EQ(result.variableNames, nullptr);
    EXPECT_EQ(result.nextOfGuid, nullptr);
    EXPECT_EQ(result.findValue(L""), nullptr);
}

TEST(ZAVSwResult, VariablesAreSortedByTheirCharactersCodes) {
    ZAVSwResult result;
    result.setVariables(
        {{L"b", "1"}, {L"\U0001F600", "2"}, {L"aa", "3"}, {L"\u00E4", "4"}, {L"a", "5"}, {L"Z", "6"}});
    EXPECT_EQ(
        pairsOf(result),
        (Pairs{{L"Z", "6"}, {L"a", "5"}, {L"aa", "3"}, {L"b", "1"}, {L"\u00E4", "4"}, {L"\U0001F600", "2"}}));
}

TEST(ZAVSwResult, TheLastVariableOfANameIsKept) {
    ZAVSwResult result;
    result.setVariables({{L"b", "1"}, {L"a", "2"}, {L"b", "3"}});
    EXPECT_EQ(pairsOf(result), (Pairs{{L"a", "2"}, {L"b", "3"}}));
    result.setVariables({{L"a", "1"}, {L"a", "2"}, {L"a", "3"}});
    EXPECT_EQ(pairsOf(result), (Pairs{{L"a", "3"}}));
    result.setVariables({{L"a", "1"}, {L"b", "2"}, {L"b", "3"}});
    EXPECT_EQ(pairsOf(result), (Pairs{{L"a", "1"}, {L"b", "3"}}));
}

TEST(ZAVSwResult, AnyOrderGivesWhatAnOrderedMapWouldGive) {
    std::mt19937 random(1);
    for (int round = 0; round < 200; ++round) {
        Pairs texts;
        for (int i = 0; i < round % 40; ++i) {
            texts.emplace_back(std::to_wstring(random() % 20), std::to_string(i));
        }
        std::map<std::wstring, std::string> expected;
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
    result.setVariables({{L"Name", "1"}, {L"other", ""}});
    EXPECT_STREQ(result.findValue(L"Name"), "1");
    EXPECT_STREQ(result.findValue(L"other"), "");
    for (const wchar_t* const missing : {L"name", L"Nam", L"Names", L"", L"zzz"}) {
        EXPECT_EQ(result.findValue(missing), nullptr) << missing;
    }
}

TEST(ZAVSwResult, TheNamesPointAtTheNamesOfTheVariables) {
    ZAVSwResult result;
    result.setVariables({{L"b", "1"}, {L"a", "2"}});
    result.generateVariablesNames();
    for (std::size_t i = 0; i < 2; ++i) EXPECT_EQ(result.variableNames.get()[i], result.variables[i].name);
}

TEST(ZAVSwResult, WithoutVariablesThereAreNoNames) {
    ZAVSwResult result;
    result.generateVariablesNames();
    EXPECT_EQ(result.variableNames, nullptr);
}

}  // namespace
