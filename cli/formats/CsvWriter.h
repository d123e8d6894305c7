// Writes inventories as CSV.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/HardwareInventory.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// One field of an RFC 4180 record: in double quotes if it contains a comma, a quote or a line break.
std::string csvField(std::string_view value);

// Whether values that a spreadsheet would take for a formula get a leading apostrophe. These begin with =, +,
// -, @ or a control character and are not numbers. Values that look like protected ones are protected too, so
// that every value can be restored.
enum class CsvFormulas { Protected, Raw };

// A value as one field of a record.
std::string csvValue(std::string_view value, CsvFormulas formulas);

// RFC 4180 with a header line. An inventory of one group is a table: a column per field and a record per instance. One of several
// groups has the columns group, instance, field, value: one record per field, with
// instances counted from 0. The records of each group begin with one that has no instance number and holds the
// status in the field _status. If there is a reason, a similar record holds it in the field _reason.
std::string csvText(const HardwareInventory& inventory, CsvFormulas formulas = CsvFormulas::Protected);

// RFC 4180 with a header line and the columns result, guid, name, variable, value: one record per variable,
// with results counted from 0. The variables _cpe and _purl hold the identity of the product if the result has it. A result without variables has one record whose last two columns are empty. An
// undecided signature has one record without a result number, with the variable _status and the value
// unknown.
std::string csvText(const SoftwareInventory& inventory, CsvFormulas formulas = CsvFormulas::Protected);

// A file of a set that holds an inventory.
struct CsvFile {
    std::string name;  // "Storage.csv"
    std::string text;
};

// A table per group, and `_status.csv` with the status of each.
std::vector<CsvFile> csvFiles(const HardwareInventory& inventory, CsvFormulas formulas);

// results.csv, variables.csv, evidence.csv, undecided.csv and warnings.csv. The column `result` joins the first three.
std::vector<CsvFile> csvFiles(const SoftwareInventory& inventory, CsvFormulas formulas);

}  // namespace zavcli
