#include "cli/formats/TableLayout.h"

#include <algorithm>

#include "cli/terminal/PrintableText.h"
#include "schema/Catalogue.h"
#include "schema/Quantity.h"

namespace zavcli {

namespace {

constexpr int kMinNarrowedWidth = 12;

// Moves the chosen names to the front, in their order.
void putFirst(std::vector<std::string>& names, std::string_view chosen) {
    auto next = names.begin();
    for (std::string_view rest = chosen; !rest.empty();) {
        const std::size_t end = std::min(rest.find(' '), rest.size());
        const auto found = std::find(next, names.end(), rest.substr(0, end));
        if (found != names.end()) std::rotate(next++, found, found + 1);
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
}

std::vector<std::string> valuesOf(const std::vector<Instance>& instances, const std::string& name) {
    std::vector<std::string> values;
    values.reserve(instances.size());
    for (const Instance& instance : instances) values.push_back(valueOf(instance, name));
    return values;
}

bool areAll(const std::vector<std::string>& values, std::string_view value) {
    return std::all_of(values.begin(), values.end(), [&](const std::string& text) { return text == value; });
}

// `field` is null if the catalogue does not have it.
std::string shown(const schema::Field* field, const std::string& value) {
    return printable(field == nullptr ? value : schema::readableValue(*field, value));
}

Column makeColumn(const std::string& name, const std::vector<std::string>& values,
                  const schema::Field* field) {
    Column column{name, {}, columnsOf(name)};
    for (const std::string& value : values) {
        column.cells.push_back(shown(field, value));
        column.width = std::max(column.width, columnsOf(column.cells.back()));
    }
    column.width = std::min(column.width, kMaxColumnWidth);
    return column;
}

}  // namespace

std::vector<std::string> fieldNames(const std::vector<Instance>& instances) {
    std::vector<std::string> names;
    for (const Instance& instance : instances) {
        for (const Field& field : instance) {
            if (std::find(names.begin(), names.end(), field.name) == names.end()) names.push_back(field.name);
        }
    }
    return names;
}

TableLayout layOut(const std::vector<Instance>& instances, std::string_view group) {
    const schema::Group* const described = schema::findGroup(group);
    std::vector<std::string> names = fieldNames(instances);
    const bool several = instances.size() > 1;
    if (described != nullptr && several) putFirst(names, described->columns);
    TableLayout layout;
    for (const std::string& name : names) {
        const std::vector<std::string> values = valuesOf(instances, name);
        const schema::Field* const field =
            described == nullptr ? nullptr : schema::findField(*described, name);
        if (areAll(values, "")) continue;
        if (several && areAll(values, values.front()))
            layout.common.push_back({name, shown(field, values.front())});
        else
            layout.columns.push_back(makeColumn(name, values, field));
    }
    return layout;
}

void narrowFirst(std::vector<Column>& columns, std::size_t count, int available) {
    const auto end = columns.begin() + static_cast<std::ptrdiff_t>(std::min(count, columns.size()));
    int excess = -available - kGap;
    for (auto column = columns.begin(); column != end; ++column) excess += column->width + kGap;
    for (; excess > 0; --excess) {
        const auto widest = std::max_element(
            columns.begin(), end, [](const Column& a, const Column& b) { return a.width < b.width; });
        if (widest == end || widest->width <= kMinNarrowedWidth) return;
        --widest->width;
    }
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
