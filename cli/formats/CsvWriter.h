#pragma once

#include <string>
#include <string_view>

#include "cli/scan/Model.h"
#include "cli/scan/Software.h"

namespace zavcli {

// One field of a CSV record as RFC 4180 wants it: in double quotes when it holds a comma, a quote or a line
// end.
std::string csvField(std::string_view value);

// Whether values that a spreadsheet would take for a formula are protected by a leading apostrophe: those that begin with =, +,
// -, @ or a control character, but for numbers, and those that would look protected.
enum class CsvFormulas { Protected, Raw };

// A value as one field of a CSV record.
std::string csvValue(std::string_view value, CsvFormulas formulas);

// RFC 4180 with a header line: one record per field of every instance, in the columns group, instance (from
// 0), field, value. In front of them stands one for each group without an instance, whose field _status tells how
// reading it went, and one with the field _reason where there is a reason.
std::string csvText(const Inventory& inventory, CsvFormulas formulas = CsvFormulas::Protected);

// One record per variable of every result, in the columns result (from 0), guid, name, variable, value. A
// result without variables has one record, in which the last two are empty. A signature of which it is unknown whether it
// matches has one without a number, with the variable _status and the value unknown.
std::string csvText(const SoftwareReport& report, CsvFormulas formulas = CsvFormulas::Protected);

}  // namespace zavcli
