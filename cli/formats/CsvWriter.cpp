#include "cli/formats/CsvWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <system_error>

#include "cli/scan/ProductIdentity.h"

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

std::string csvText(const HardwareInventory& inventory, CsvFormulas formulas) {
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
