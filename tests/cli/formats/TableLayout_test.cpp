#include "cli/formats/TableLayout.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

std::vector<std::string> names(const std::vector<Column>& columns) {
    std::vector<std::string> result;
    result.reserve(columns.size());
    for (const Column& column : columns) result.push_back(column.name);
    return result;
}

using Names = std::vector<std::string>;

TEST(TableLayout, ColumnsThatAreEmptyEverywhereAreLeftOut) {
    const TableLayout layout =
        layOut({{{"A", "1"}, {"B", ""}, {"C", "3"}}, {{"A", "2"}, {"B", ""}, {"C", ""}}});
    EXPECT_EQ((Names{"A", "C"}), names(layout.columns));
}

TEST(TableLayout, ValuesSharedByAllInstancesAreCommon) {
    const TableLayout layout = layOut({{{"A", "1"}, {"B", "x"}}, {{"A", "2"}, {"B", "x"}}});
    EXPECT_EQ((Names{"A"}), names(layout.columns));
    ASSERT_EQ(1U, layout.common.size());
    EXPECT_EQ("B", layout.common[0].name);
    EXPECT_EQ("x", layout.common[0].value);
}

TEST(TableLayout, NothingIsCommonToOneInstance) {
    const TableLayout layout = layOut({{{"A", "1"}}});
    EXPECT_TRUE(layout.common.empty());
    EXPECT_EQ((Names{"A"}), names(layout.columns));
}

TEST(TableLayout, FieldMissingInSomeInstancesIsAnEmptyCell) {
    const TableLayout layout = layOut({{{"A", "1"}}, {{"A", "2"}, {"B", "x"}}});
    ASSERT_EQ((Names{"A", "B"}), names(layout.columns));
    EXPECT_EQ((Names{"", "x"}), layout.columns[1].cells);
}

TEST(TableLayout, WidthIsThatOfTheWidestCellOrNameUpToALimit) {
    const TableLayout layout =
        layOut({{{"Name", "1"}, {"B", std::string(200, 'x')}}, {{"Name", "12345"}, {"B", ""}}});
    EXPECT_EQ(5, layout.columns[0].width);
    EXPECT_EQ(kMaxColumnWidth, layout.columns[1].width);
}

TEST(TableLayout, CellsArePrintable) {
    EXPECT_EQ("\\u001b[2J", layOut({{{"A", "\x1b[2J"}}}).columns[0].cells[0]);
}

TEST(TableLayout, NoInstancesGiveNothing) {
    const TableLayout layout = layOut({});
    EXPECT_TRUE(layout.columns.empty() && layout.common.empty());
}

TEST(FittingColumns, AsManyColumnsAsFitAreChosenInOrder) {
    const std::vector<Column> columns{{"A", {}, 10}, {"B", {}, 10}, {"C", {}, 30}, {"D", {}, 4}};
    const struct {
        int available;
        std::vector<std::size_t> fitting;
    } cases[] = {
        {60, {0, 1, 2, 3}},  // 10 + 2+10 + 2+30 + 2+4
        {59, {0, 1, 2}},    {28, {0, 1, 3}}, {27, {0, 1}}, {10, {0}}, {5, {0}},
    };
    for (const auto& [available, fitting] : cases)
        EXPECT_EQ(fitting, fittingColumns(columns, available)) << available;
    EXPECT_TRUE(fittingColumns({}, 80).empty());
}

}  // namespace
}  // namespace zavcli
