#include "toolkit/quorvis/language/Template.h"

#include <gtest/gtest.h>

namespace toolkit::quorvis {
namespace {

// "[text](variable)"
std::string shown(const Template& text) {
    std::string result;
    for (const Template::Piece& piece : text.pieces()) {
        result += piece.variable ? "(" : "[";
        result.append(piece.text);
        result += piece.variable ? ")" : "]";
    }
    return result;
}

TEST(Template, TextWithoutVariablesIsConstant) {
    for (const char* const text : {"", "plain", "$", "a$b", "{x}", "$ {x}"}) {
        Template parsed;
        std::string problem;
        EXPECT_TRUE(Template::parse(text, parsed, problem));
        EXPECT_TRUE(parsed.constant()) << text;
        EXPECT_EQ(parsed.source(), text);
    }
}

TEST(Template, FindsVariablesAndEscapes) {
    const std::pair<const char*, const char*> cases[] = {
        {"${a}", "(a)"},     {"x${a.b}y", "[x](a.b)[y]"},    {"${a}${b}", "(a)(b)"},
        {"$${a}", "[${a}]"}, {"x$${a}${b}", "[x][${a}](b)"}, {"$$${a}", "[$][${a}]"},
        {"${a}$", "(a)[$]"},
    };
    for (const auto& [text, pieces] : cases) {
        Template parsed;
        std::string problem;
        EXPECT_TRUE(Template::parse(text, parsed, problem)) << problem;
        EXPECT_EQ(shown(parsed), pieces) << text;
    }
}

TEST(Template, RefusesUnclosedAndEmptyNames) {
    for (const char* const text : {"${", "${a", "x${}", "${a${b}}", "${a{b}"}) {
        Template parsed;
        std::string problem;
        EXPECT_FALSE(Template::parse(text, parsed, problem)) << text;
        EXPECT_NE(problem, "") << text;
    }
}

}  // namespace
}  // namespace toolkit::quorvis
