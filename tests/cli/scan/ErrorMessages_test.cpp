#include "cli/scan/ErrorMessages.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <string>

#include "include/zav.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

// The codes that the interface header declares.
std::set<int> declaredCodes() {
    const std::string header = zavtest::readAll(ZAVTEST_HEADER);
    const std::regex declaration("ZAV_(?:SUCCESS|ERROR_[A-Z_]+) = ([0-9]+)");
    std::set<int> codes;
    for (std::sregex_iterator i(header.begin(), header.end(), declaration), end; i != end; ++i)
        codes.insert(std::stoi((*i)[1]));
    return codes;
}

TEST(ErrorMessages, EveryDeclaredCodeHasItsOwnMessage) {
    std::set<std::string_view> sentences{errorMessage(9999)};
    const std::set<int> codes = declaredCodes();
    EXPECT_EQ(26U, codes.size());
    for (const int code : codes) EXPECT_TRUE(sentences.insert(errorMessage(code)).second) << code;
}

TEST(ErrorMessages, MessagesFitOnOneLineAfterAColon) {
    for (const int code : declaredCodes()) {
        const std::string_view text = errorMessage(code);
        EXPECT_NE(0, std::islower(static_cast<unsigned char>(text.front()))) << text;
        EXPECT_NE('.', text.back()) << text;
        EXPECT_EQ(std::string_view::npos, text.find('\n')) << text;
    }
}

TEST(ErrorMessages, UnknownCodeIsReportedAsUnknown) {
    for (const int code : {-1, 1, 8, 100, 109000}) EXPECT_EQ(errorMessage(9999), errorMessage(code)) << code;
}

}  // namespace
}  // namespace zavcli
