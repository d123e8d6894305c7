#include "cli/formats/TableWriter.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <climits>
#include <iterator>

#include "cli/formats/FieldLines.h"
#include "cli/formats/TableLayout.h"
#include "cli/terminal/PrintableText.h"
#include "include/zav.h"

namespace zavcli {

namespace {

constexpr std::size_t kOverviewRows = 10;
constexpr std::size_t kOverviewValueLines = 2;
// So many columns are shown even if their values must be cut.
constexpr std::size_t kLeadingColumns = 3;
constexpr std::string_view kIndent = "  ";

// The overview begins with what administrators ask first, and ends with what is long or special.
constexpr std::array kFirst{ZAV_HW_OPERATING_SYSTEM, ZAV_HW_COMPONENT_ID, ZAV_HW_PHYSICAL_PROCESSOR,
                            ZAV_HW_MEMORY,           ZAV_HW_STORAGE,      ZAV_HW_LOGICAL_DRIVE,
                            ZAV_HW_NETWORK_ADAPTER,  ZAV_HW_IP_ADDRESS,   ZAV_HW_IPV6_ADDRESS};
constexpr std::array kLast{ZAV_HW_SERVICE_INFO, ZAV_HW_SOFTWARE_PACKAGES, ZAV_HW_SMBIOS, ZAV_HW_SCAN_INFO};

int rank(int id) {
    const auto* first = std::find(kFirst.begin(), kFirst.end(), id);
    if (first != kFirst.end()) return static_cast<int>(first - kFirst.begin()) - INT_MAX / 2;
    const auto* last = std::find(kLast.begin(), kLast.end(), id);
    return last == kLast.end() ? id : static_cast<int>(last - kLast.begin()) + INT_MAX / 2;
}

std::string withoutTrailingBlanks(std::string line) {
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

// The text after the name of an incomplete group that has instances.
std::string incompleteMark(const GroupStatus& status) {
    if (status.state != GroupState::Partial && status.state != GroupState::Unread) return "";
    return fmt::format(" - incomplete: {}", printable(reasonText(status.reason)));
}

std::string withReason(const Group& group) {
    if (group.status.reason.empty() || group.status.state == GroupState::Unsupported) return group.name;
    return fmt::format("{} ({})", group.name, printable(reasonText(group.status.reason)));
}

// A sentence for each reason why groups have no instances.
std::vector<std::string> emptyGroups(const std::vector<Group>& groups) {
    struct Kind {
        GroupState state;
        std::string_view lead;
    };
    constexpr std::array<Kind, 6> kKinds{
        {{GroupState::Complete, "Nothing found for"},
         {GroupState::Unknown, "Nothing found, and the scanner does not report whether it is complete, for"},
         {GroupState::Partial, "Could not be read"},
         {GroupState::Unread, "Could not be read"},
         {GroupState::NotApplicable, "Not applicable here"},
         {GroupState::Unsupported, "Not implemented by this scanner"}}};
    std::vector<std::string> lines;
    for (const Kind& kind : kKinds) {
        std::vector<std::string> names;
        for (const Group& group : groups) {
            if (group.instances.empty() && group.status.state == kind.state)
                names.push_back(withReason(group));
        }
        if (!names.empty()) lines.push_back(fmt::format("{}: {}.", kind.lead, fmt::join(names, ", ")));
    }
    return lines;
}

class Writer {
  public:
    explicit Writer(const TableStyle& style) : style_(style) {}

    std::string write(const HardwareInventory& inventory) {
        std::vector<Group> groups = inventory.groups;
        if (style_.overview) {
            std::stable_sort(groups.begin(), groups.end(),
                             [](const Group& a, const Group& b) { return rank(a.id) < rank(b.id); });
        }
        for (const Group& group : groups) {
            if (!group.instances.empty()) writeGroup(group);
        }
        for (const std::string& line : emptyGroups(groups)) paragraph("", line);
        if (omitted_)
            paragraph(
                "", "Some rows or fields are omitted. Use --all, or --format json, csv or xml, to see them.");
        return text_;
    }

  private:
    template <typename... Arguments>
    void print(fmt::format_string<Arguments...> format, Arguments&&... arguments) {
        fmt::format_to(std::back_inserter(text_), format, std::forward<Arguments>(arguments)...);
    }

    void paragraph(std::string_view indent, const std::string& body) {
        for (const std::string& line : wrap(body, style_.columns - static_cast<int>(indent.size())))
            print("{}{}\n", indent, line);
    }

    void heading(const Group& group) {
        const std::string name =
            style_.bold ? fmt::format("\x1b[1m{}\x1b[0m", printable(group.name)) : printable(group.name);
        if (group.instances.size() > 1)
            print("{} ({}){}\n", name, group.instances.size(), incompleteMark(group.status));
        else
            print("{}{}\n", name, incompleteMark(group.status));
    }

    void writeGroup(const Group& group) {
        heading(group);
        TableLayout layout = layOut(group.instances, group.name);
        if (layout.common.empty() && layout.columns.empty()) {
            print("{}no values\n", kIndent);
        } else if (group.instances.size() == 1) {
            instance(layout.columns, 0, kIndent);
        } else {
            if (!layout.common.empty()) {
                print("{}the same for all:\n", kIndent);
                fields(layout.common, "    ");
            }
            rows(layout.columns, group);
        }
        text_ += '\n';
    }

    void instance(const std::vector<Column>& columns, std::size_t row, std::string_view indent) {
        std::vector<Field> lines;
        for (const Column& column : columns) {
            if (!column.cells[row].empty()) lines.push_back({column.name, column.cells[row]});
        }
        fields(lines, indent);
    }

    void fields(const std::vector<Field>& lines, std::string_view indent) {
        const bool cutShort = style_.overview && !style_.everything;
        const FieldLines written = cutShort ? fieldLines(lines, indent, style_.columns, kOverviewValueLines)
                                            : fieldLines(lines, indent, style_.columns);
        text_ += written.text;
        omitted_ = omitted_ || written.cut;
    }

    void rows(std::vector<Column>& columns, const Group& group) {
        if (columns.empty()) return;
        const int available = style_.columns - static_cast<int>(kIndent.size());
        if (!style_.everything) narrowFirst(columns, kLeadingColumns, available);
        const std::vector<std::size_t> shown = fittingColumns(columns, available);
        if (style_.everything && (shown.size() < columns.size() || isClipped(columns))) {
            blocks(columns, group.instances.size());
            return;
        }
        omitted_ = omitted_ || isClipped(columns);
        line(columns, shown, [](const Column& column) { return column.name; });
        const std::size_t count = group.instances.size();
        const std::size_t limit = style_.overview && !style_.everything ? kOverviewRows : count;
        for (std::size_t row = 0; row < std::min(limit, count); ++row)
            line(columns, shown, [row](const Column& column) { return column.cells[row]; });
        if (count > limit) {
            paragraph(kIndent,
                      fmt::format("... and {} more (--group {} shows all rows)", count - limit, group.name));
            omitted_ = true;
        }
        otherFieldNames(columns, shown);
    }

    static bool isClipped(const std::vector<Column>& columns) {
        return std::any_of(columns.begin(), columns.end(), [](const Column& column) {
            return std::any_of(column.cells.begin(), column.cells.end(),
                               [&](const std::string& cell) { return columnsOf(cell) > column.width; });
        });
    }

    template <typename Content>
    void line(const std::vector<Column>& columns, const std::vector<std::size_t>& shown, Content content) {
        std::string text(kIndent);
        for (const std::size_t index : shown) {
            const Column& column = columns[index];
            text += pad(clip(content(column), column.width), column.width + kGap);
        }
        print("{}\n", withoutTrailingBlanks(std::move(text)));
    }

    void otherFieldNames(const std::vector<Column>& columns, const std::vector<std::size_t>& shown) {
        std::vector<std::string> names;
        for (std::size_t i = 0; i < columns.size(); ++i) {
            if (std::find(shown.begin(), shown.end(), i) == shown.end()) names.push_back(columns[i].name);
        }
        if (names.empty()) return;
        omitted_ = true;
        paragraph(kIndent, fmt::format("more fields: {}", fmt::join(names, ", ")));
    }

    void blocks(const std::vector<Column>& columns, std::size_t count) {
        for (std::size_t row = 0; row < count; ++row) {
            print("{}[{}]\n", kIndent, row);
            instance(columns, row, "    ");
        }
    }

    const TableStyle& style_;
    std::string text_;
    bool omitted_ = false;
};

}  // namespace

std::string tableText(const HardwareInventory& inventory, const TableStyle& style) {
    return Writer(style).write(inventory);
}

}  // namespace zavcli
