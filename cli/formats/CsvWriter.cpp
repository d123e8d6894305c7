#include "cli/formats/CsvWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <system_error>

#include "cli/formats/TableLayout.h"
#include "cli/scan/ProductIdentity.h"
#include "cli/scan/ResultMetadata.h"
#include "schema/Catalogue.h"

namespace zavcli {

std::string csvField(std::string_view value) {
    if (value.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(value);
    std::string quoted = "\"";
    for (const char byte : value) {
        if (byte == '"') quoted += '"';
        quoted += byte;
    }
    return quoted + '"';
}

namespace {

bool isNumber(std::string_view text) {
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    double number = 0;
    const bool digitFirst = !text.empty() && text.front() >= '0' && text.front() <= '9';
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return digitFirst && error != std::errc::invalid_argument && end == text.data() + text.size();
}

// Spreadsheets evaluate such values, and may skip a leading control character. A value that already looks
// protected counts too.
bool looksLikeFormula(std::string_view value) {
    const std::size_t quotes = std::min(value.find_first_not_of('\''), value.size());
    const std::string_view rest = value.substr(quotes);
    if (rest.empty()) return false;
    const auto first = static_cast<unsigned char>(rest.front());
    const bool special = std::string_view("=+-@").find(rest.front()) != std::string_view::npos;
    return (special && (quotes > 0 || !isNumber(rest))) || first < 0x20 || first == 0x7f;
}

}  // namespace

std::string csvValue(std::string_view value, CsvFormulas formulas) {
    const bool protect = formulas == CsvFormulas::Protected && looksLikeFormula(value);
    return csvField(protect ? "'" + std::string(value) : std::string(value));
}

namespace {

using Names = std::vector<std::string>;

void addMissing(Names& names, const std::string& name) {
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
}

// A record per row with a column per name.
std::string table(const Names& names, const std::vector<std::vector<Field>>& rows, CsvFormulas formulas) {
    std::string text;
    const auto addRecord = [&](const auto& valueOfName) {
        for (std::size_t i = 0; i < names.size(); ++i) {
            if (i > 0) text += ',';
            text += csvValue(valueOfName(names[i]), formulas);
        }
        text += "\r\n";
    };
    addRecord([](const std::string& name) { return name; });
    for (const std::vector<Field>& row : rows)
        addRecord([&row](const std::string& name) { return valueOf(row, name); });
    return text;
}

// The fields of the catalogue, so that all machines have the same columns, and then those that only this scanner has.
std::string table(const Group& group, CsvFormulas formulas) {
    Names names;
    if (const schema::Group* const described = schema::findGroup(group.name)) {
        for (const schema::Field& field : described->fields) names.emplace_back(field.name);
    }
    for (const std::string& name : fieldNames(group.instances)) addMissing(names, name);
    return table(names, group.instances, formulas);
}

std::string withNames(Names names, const std::vector<std::vector<Field>>& rows, CsvFormulas formulas) {
    for (const std::string& name : fieldNames(rows)) addMissing(names, name);
    return table(names, rows, formulas);
}

}  // namespace

std::vector<CsvFile> csvFiles(const HardwareInventory& inventory, CsvFormulas formulas) {
    std::vector<CsvFile> files;
    std::vector<std::vector<Field>> statuses;
    for (const Group& group : inventory.groups) {
        files.push_back({group.name + ".csv", table(group, formulas)});
        statuses.push_back({{"group", group.name},
                            {"status", std::string(statusWord(group.status.state))},
                            {"reason", group.status.reason},
                            {"instances", std::to_string(group.instances.size())}});
    }
    files.push_back({"_status.csv", table({"group", "status", "reason", "instances"}, statuses, formulas)});
    return files;
}

std::vector<CsvFile> csvFiles(const SoftwareInventory& inventory, CsvFormulas formulas) {
    std::vector<std::vector<Field>> results;
    std::vector<std::vector<Field>> variables;
    std::vector<std::vector<Field>> evidence;
    for (std::size_t i = 0; i < inventory.results.size(); ++i) {
        const MatchedSignature& match = inventory.results[i];
        const ProductIdentity identity = identityOf(match);
        const Field result{"result", std::to_string(i)};
        results.push_back({result,
                           {"guid", match.guid},
                           {"name", match.name},
                           {"version", identity.version},
                           {"place", identity.place},
                           {"cpe", identity.cpe},
                           {"purl", identity.purl}});
        for (const Field& variable : match.variables)
            variables.push_back({result, {"variable", variable.name}, {"value", variable.value}});
        for (std::vector<Field> piece : readMetadata(match.metadata).evidence) {
            piece.insert(piece.begin(), result);
            evidence.push_back(std::move(piece));
        }
    }
    std::vector<std::vector<Field>> undecided;
    for (const UndecidedSignature& signature : inventory.undecided)
        undecided.push_back({{"guid", signature.guid}, {"name", signature.name}});
    std::vector<std::vector<Field>> warnings;
    for (const Warning& warning : inventory.warnings) {
        warnings.push_back(warning.attributes);
        warnings.back().push_back({"text", warning.text});
    }
    return {{"results.csv",
             table({"result", "guid", "name", "version", "place", "cpe", "purl"}, results, formulas)},
            {"variables.csv", table({"result", "variable", "value"}, variables, formulas)},
            {"evidence.csv", withNames({"result", "kind", "name", "version", "source"}, evidence, formulas)},
            {"undecided.csv", table({"guid", "name"}, undecided, formulas)},
            {"warnings.csv", withNames({"code", "severity", "guid", "path", "text"}, warnings, formulas)}};
}

std::string csvText(const HardwareInventory& inventory, CsvFormulas formulas) {
    if (inventory.groups.size() == 1) return table(inventory.groups.front(), formulas);
    std::string text = "group,instance,field,value\r\n";
    for (const Group& group : inventory.groups) {
        fmt::format_to(std::back_inserter(text), "{},,_status,{}\r\n", csvField(group.name),
                       statusWord(group.status.state));
        if (!group.status.reason.empty())
            fmt::format_to(std::back_inserter(text), "{},,_reason,{}\r\n", csvField(group.name),
                           csvField(group.status.reason));
        for (std::size_t i = 0; i < group.instances.size(); ++i) {
            for (const Field& field : group.instances[i]) {
                fmt::format_to(std::back_inserter(text), "{},{},{},{}\r\n", csvField(group.name), i,
                               csvValue(field.name, formulas), csvValue(field.value, formulas));
            }
        }
    }
    return text;
}

std::string csvText(const SoftwareInventory& inventory, CsvFormulas formulas) {
    std::string text = "result,guid,name,variable,value\r\n";
    for (std::size_t i = 0; i < inventory.results.size(); ++i) {
        const MatchedSignature& match = inventory.results[i];
        std::vector<Field> variables = match.variables;
        const ProductIdentity identity = identityOf(match);
        if (!identity.cpe.empty()) variables.push_back({"_cpe", identity.cpe});
        if (!identity.purl.empty()) variables.push_back({"_purl", identity.purl});
        if (variables.empty()) variables.emplace_back();
        for (const Field& variable : variables) {
            fmt::format_to(std::back_inserter(text), "{},{},{},{},{}\r\n", i, csvValue(match.guid, formulas),
                           csvValue(match.name, formulas), csvValue(variable.name, formulas),
                           csvValue(variable.value, formulas));
        }
    }
    for (const UndecidedSignature& signature : inventory.undecided) {
        fmt::format_to(std::back_inserter(text), ",{},{},_status,unknown\r\n",
                       csvValue(signature.guid, formulas), csvValue(signature.name, formulas));
    }
    return text;
}

}  // namespace zavcli
