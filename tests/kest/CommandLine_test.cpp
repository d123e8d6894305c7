#include "kest/CommandLine.h"

#include <gtest/gtest.h>

namespace kest {
namespace {

using Arguments = std::vector<std::string>;

struct Case {
    const char* line;
    Arguments arguments;
};

void expectAll(const std::vector<Case>& cases) {
    for (const Case& expected : cases) {
        EXPECT_EQ(splitCommandLine(expected.line), expected.arguments) << "line: " << expected.line;
    }
}

TEST(CommandLine, BlanksAndTabsSplit) {
    expectAll({{"", {}},
               {" ", {}},
               {" \t ", {}},
               {"a", {"a"}},
               {"a b", {"a", "b"}},
               {"a\tb", {"a", "b"}},
               {"  a \t b  ", {"a", "b"}}});
}

TEST(CommandLine, DoubleQuotesGroupAndAreRemoved) {
    expectAll({{"\"a b\"", {"a b"}},
               {"\"a\tb\" c", {"a\tb", "c"}},
               {"a\"b c\"d", {"ab cd"}},
               {"\"a\"\"b\"", {"ab"}},
               {"\"a\" \"b\"", {"a", "b"}},
               {"x -c \"/tmp/my file\" -o \"/tmp/out\"", {"x", "-c", "/tmp/my file", "-o", "/tmp/out"}}});
}

TEST(CommandLine, AnEmptyPairOfQuotesIsAnEmptyArgument) {
    expectAll({{"\"\"", {""}}, {"a \"\" b", {"a", "", "b"}}, {"a\"\"", {"a"}}, {"\"\"\"\"", {""}}});
}

TEST(CommandLine, AnUnclosedQuoteReachesToTheEnd) {
    expectAll({{"a \"b c", {"a", "b c"}}, {"a b\" c ", {"a", "b c "}}, {"a \"", {"a", ""}}});
}

TEST(CommandLine, NothingElseIsSpecial) {
    expectAll({{"a;b $(c) `d`", {"a;b", "$(c)", "`d`"}},
               {"'a b'", {"'a", "b'"}},
               {"a\\ b \\\"c\\\"", {"a\\", "b", "\\c\\"}},
               {"* ~ $HOME | & > # %A%", {"*", "~", "$HOME", "|", "&", ">", "#", "%A%"}},
               {"a\nb\rc\vd", {"a\nb\rc\vd"}}});
}

TEST(CommandLine, EveryByteOtherThanTheSeparatorsIsKept) {
    std::string all;
    for (int byte = 0; byte < 256; ++byte) {
        if (byte != ' ' && byte != '\t' && byte != '"') all += static_cast<char>(byte);
    }
    EXPECT_EQ(splitCommandLine(all + " x"), (Arguments{all, "x"}));
}

}  // namespace
}  // namespace kest
