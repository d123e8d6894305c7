#include "cli/formats/RowLayout.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>

#include "cli/formats/TableLayout.h"
#include "cli/terminal/PrintableText.h"

namespace zavcli {

namespace {

using Row = std::vector<std::string>;

std::vector<int> naturalWidths(const std::vector<Row>& lines) {
    std::vector<int> widths(lines.front().size());
    for (const Row& line : lines) {
        for (std::size_t i = 0; i < line.size(); ++i) widths[i] = std::max(widths[i], columnsOf(line[i]));
    }
    return widths;
}

// Narrows the widest column by one, again and again, until all fit or none can be narrowed.
void fit(std::vector<int>& widths, const std::vector<RowColumn>& columns, int available) {
    int excess = std::accumulate(widths.begin(), widths.end(), 0) - available;
    while (excess-- > 0) {
        std::size_t widest = widths.size();
        for (std::size_t i = 0; i < widths.size(); ++i) {
            const bool mayShrink = widths[i] > columns[i].minimum;
            if (mayShrink && (widest == widths.size() || widths[i] > widths[widest])) widest = i;
        }
        if (widest == widths.size()) return;
        --widths[widest];
    }
}

std::string lineOf(const Row& values, const std::vector<RowColumn>& columns, const std::vector<int>& widths) {
    std::string line;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const int width = std::max(1, widths[i]);
        const std::string value = columns[i].isPath ? clipPath(values[i], width) : clip(values[i], width);
        line += pad(value, width + kGap);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

}  // namespace

std::string rowTable(const std::vector<RowColumn>& columns, const std::vector<Row>& rows, int width,
                     bool boldTitles) {
    std::vector<Row> lines(1);
    for (const RowColumn& column : columns) lines.front().push_back(column.title);
    for (const Row& row : rows) {
        Row& line = lines.emplace_back();
        for (const std::string& value : row) line.push_back(printable(value));
    }
    std::vector<int> widths = naturalWidths(lines);
    if (width > 0) fit(widths, columns, width - kGap * static_cast<int>(columns.size() - 1));
    std::string text;
    for (const Row& line : lines) {
        const bool bold = boldTitles && text.empty();
        text += fmt::format("{}{}{}\n", bold ? "\x1b[1m" : "", lineOf(line, columns, widths),
                            bold ? "\x1b[0m" : "");
    }
    return text;
}

}  // namespace zavcli
