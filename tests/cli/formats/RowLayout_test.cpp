#include "cli/formats/RowLayout.h"

#include <gtest/gtest.h>

#include <sstream>

#include "cli/terminal/PrintableText.h"

namespace zavcli {
namespace {

using Rows = std::vector<std::vector<std::string>>;

const std::vector<RowColumn> kColumns{{"Name", 6}, {"Place", 6, true}, {"Note", 6}};

TEST(RowLayout, ColumnsAreAlignedAndLinesEndWithoutBlanks) {
    EXPECT_EQ(
        "Name    Place  Note\n"
        "a       /b     c\n"
        "longer\n",
        rowTable(kColumns, Rows{{"a", "/b", "c"}, {"longer", "", ""}}, 0, false));
}

TEST(RowLayout, WithoutAWidthNothingIsCut) {
    const std::string path(300, 'x');
    EXPECT_NE(std::string::npos, rowTable(kColumns, Rows{{"a", path, "c"}}, 0, false).find(path));
}

TEST(RowLayout, WidestColumnsAreCutFirst) {
    EXPECT_EQ(
        "Name   Place          Note\n"
        "short  /usr/l…n/tool  note\n",
        rowTable({{"Name", 5}, {"Place", 6, true}, {"Note", 4}},
                 Rows{{"short", "/usr/lib/x/bin/tool", "note"}}, 26, false));
}

TEST(RowLayout, NoLineIsWiderThanTheTerminal) {
    const Rows rows{
        {std::string(40, 'n'), "/" + std::string(90, 'p'), std::string(30, 'o')},
        {"\xe4\xbd\xa0\xe5\xa5\xbd", "/\xe4\xbd\xa0\xe5\xa5\xbd\xe4\xbd\xa0\xe5\xa5\xbd\xe4\xbd\xa0", "x"}};
    for (int width = 22; width < 200; ++width) {
        std::istringstream lines(rowTable(kColumns, rows, width, false));
        for (std::string line; std::getline(lines, line);) EXPECT_LE(columnsOf(line), width) << line;
    }
}

TEST(RowLayout, ValuesAreMadePrintableAndTitlesBold) {
    const std::string text = rowTable({{"Name", 4}}, Rows{{"a\nb\x1b[2J"}}, 0, true);
    EXPECT_EQ("\x1b[1mName\x1b[0m\na\\nb\\u001b[2J\n", text);
}

}  // namespace
}  // namespace zavcli
