#include "cli/formats/FieldLines.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "cli/formats/TableLayout.h"
#include "cli/terminal/PrintableText.h"

namespace zavcli {

namespace {

constexpr int kMinValueColumns = 2;

}  // namespace

FieldLines fieldLines(const std::vector<Field>& fields, std::string_view indent, int columns,
                      std::size_t linesPerValue) {
    int nameColumns = 0;
    for (const Field& field : fields) nameColumns = std::max(nameColumns, columnsOf(field.name));
    nameColumns = std::min(nameColumns, columns / 2);
    const int valueColumns =
        std::max(kMinValueColumns, columns - nameColumns - kGap - static_cast<int>(indent.size()));
    FieldLines result;
    for (const Field& field : fields) {
        std::vector<std::string> lines = wrap(field.value, valueColumns);
        if (lines.size() > linesPerValue) {
            std::string& last = lines[linesPerValue - 1];
            last.append(" ").append(lines[linesPerValue]);
            last = clip(last, valueColumns);
            lines.resize(linesPerValue);
            result.cut = true;
        }
        std::string name = pad(clip(field.name, std::max(1, nameColumns)), nameColumns);
        for (const std::string& line : lines) {
            fmt::format_to(std::back_inserter(result.text), "{}{}  {}\n", indent, name, line);
            name.assign(static_cast<std::size_t>(nameColumns), ' ');
        }
    }
    return result;
}

}  // namespace zavcli
