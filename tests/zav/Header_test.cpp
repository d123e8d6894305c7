// Compares the header's comments and constants with the behaviour of the library.
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <regex>
#include <string>

#include "include/zav.h"
#include "include/zav_codes.h"

namespace {

// The enumerators of the header with this prefix, without the prefix.
std::map<std::string, int> enumerators(const std::string& prefix) {
    std::map<std::string, int> found;
    const std::regex definition("^    " + prefix + "([A-Z0-9_]+) = ([0-9]+).*");
    std::ifstream header(ZAV_HEADER);
    std::smatch match;
    for (std::string line; std::getline(header, line);)
        if (std::regex_match(line, match, definition)) found[match[1]] = std::stoi(match[2]);
    return found;
}

std::string upperCase(const wchar_t* text) {
    std::string upper;
    for (; *text != L'\0'; ++text) upper.push_back(static_cast<char>(std::toupper(static_cast<int>(*text))));
    return upper;
}

class Header : public testing::Test {
  protected:
    void SetUp() override {
        ASSERT_EQ(ZAV_init("header", nullptr, nullptr, nullptr, L"/none", &zav_), ZAV_SUCCESS);
        ASSERT_EQ(ZAV_hw_init(zav_, nullptr, nullptr, &hw_), ZAV_SUCCESS);
    }
    void TearDown() override {
        EXPECT_EQ(ZAV_hw_free(hw_), ZAV_SUCCESS);
        EXPECT_EQ(ZAV_free(zav_), ZAV_SUCCESS);
    }

    ZAVCtx* zav_ = nullptr;
    ZAVHwCtx* hw_ = nullptr;
};

TEST_F(Header, EveryGroupHasAnEnumeratorOfItsName) {
    std::map<std::string, int> groups = enumerators("ZAV_HW_");
    EXPECT_EQ(groups.at("ALL"), 0);
    groups.erase("ALL");
    std::map<std::string, int> named;
    for (int id = 1; id <= 51; ++id) {
        const wchar_t* name = nullptr;
        if (ZAV_hw_get_group_name(hw_, id, &name) == ZAV_SUCCESS) named[upperCase(name)] = id;
    }
    std::map<std::string, int> declared;
    for (const auto& [name, id] : groups) declared[std::regex_replace(name, std::regex("_"), "")] = id;
    EXPECT_EQ(declared, named);
    EXPECT_EQ(named.size(), 48U);
}

TEST_F(Header, ThePageOfGroupsNumbersThemAsTheLibraryDoes) {
    const std::regex heading("## ([0-9]+) ([A-Za-z0-9]+)");
    std::ifstream page(ZAV_GROUPS_PAGE);
    std::smatch match;
    int headings = 0;
    for (std::string line; std::getline(page, line);) {
        if (!std::regex_match(line, match, heading)) continue;
        const wchar_t* name = L"";
        EXPECT_EQ(ZAV_hw_get_group_name(hw_, std::stoi(match[1]), &name), ZAV_SUCCESS) << line;
        EXPECT_EQ(std::wstring(match[2].first, match[2].second), name);
        ++headings;
    }
    EXPECT_GT(headings, 0);
}

TEST_F(Header, EveryCodeHasADistinctText) {
    std::map<std::string, int> codes = enumerators("ZAV_ERROR_");
    EXPECT_EQ(codes.size(), 25U);
    codes["SUCCESS"] = ZAV_SUCCESS;
    std::map<std::string, int> texts;
    for (const auto& [name, code] : codes) {
        const std::string text = ZAV_code_text(code);
        EXPECT_NE(text, "unknown return code") << name;
        EXPECT_TRUE(texts.emplace(text, code).second) << name << ": " << text;
    }
}

TEST_F(Header, ANumberThatIsNoCodeIsCalledUnknown) {
    for (const int number : {-1, 1, 8, 100, 110, 200, 211})
        EXPECT_STREQ(ZAV_code_text(number), "unknown return code") << number;
}

TEST_F(Header, TheVersionIsTheSameAsTextAndInNumbers) {
    EXPECT_EQ(ZAV_VERSION, std::to_string(ZAV_VERSION_MAJOR) + "." + std::to_string(ZAV_VERSION_MINOR) + "." +
                               std::to_string(ZAV_VERSION_PATCH));
}

}  // namespace
