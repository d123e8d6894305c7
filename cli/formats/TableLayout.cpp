#include "cli/formats/TableLayout.h"

#include <algorithm>

#include "cli/terminal/PrintableText.h"

namespace zavcli {

namespace {

// All field names of the group in the order of their first occurrence.
std::vector<std::string> fieldNames(const std::vector<Instance>& instances) {
    std::vector<std::string> names;
    for (const Instance& instance : instances) {
        for (const Field& field : instance) {
            if (std::find(names.begin(), names.end(), field.name) == names.end()) names.push_back(field.name);
        }
    }
    return names;
}

Column makeColumn(const std::vector<Instance>& instances, const std::string& name) {
    Column column{name, {}, columnsOf(name)};
    for (const Instance& instance : instances) {
        column.cells.push_back(printable(valueOf(instance, name)));
        column.width = std::max(column.width, columnsOf(column.cells.back()));
    }
    column.width = std::min(column.width, kMaxColumnWidth);
    return column;
}

bool isEverywhere(const Column& column, std::string_view value) {
    return std::all_of(column.cells.begin(), column.cells.end(),
                       [&](const std::string& text) { return text == value; });
}

}  // namespace

TableLayout layOut(const std::vector<Instance>& instances) {
    TableLayout layout;
    for (const std::string& name : fieldNames(instances)) {
        Column column = makeColumn(instances, name);
        if (isEverywhere(column, "")) continue;
        if (instances.size() > 1 && isEverywhere(column, column.cells.front()))
            layout.common.push_back({column.name, column.cells.front()});
        else
            layout.columns.push_back(std::move(column));
    }
    return layout;
}

std::vector<std::size_t> fittingColumns(const std::vector<Column>& columns, int available) {
    std::vector<std::size_t> fitting;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const int needed = columns[i].width + (fitting.empty() ? 0 : kGap);
        if (!fitting.empty() && needed > available) continue;
        available -= needed;
        fitting.push_back(i);
    }
    return fitting;
}

}  // namespace zavcli
