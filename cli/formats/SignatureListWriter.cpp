#include "cli/formats/SignatureListWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/formats/RowLayout.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

std::string signatureTable(const std::vector<SignatureEntry>& signatures, const TableStyle& style) {
    std::vector<std::vector<std::string>> rows;
    rows.reserve(signatures.size());
    for (const SignatureEntry& entry : signatures) rows.push_back({entry.name, entry.publisher, entry.guid});
    std::stable_sort(rows.begin(), rows.end(), [](const auto& one, const auto& other) {
        return lowerCase(one.front()) < lowerCase(other.front());
    });
    const std::vector<RowColumn> columns{{"Name", 16}, {"Publisher", 12}, {"GUID", 12}};
    return rowTable(columns, rows, style.fitted ? style.columns : 0, style.bold);
}

std::string signatureJson(const std::vector<SignatureEntry>& signatures) {
    auto array = nlohmann::ordered_json::array();
    for (const SignatureEntry& entry : signatures) {
        nlohmann::ordered_json json = {{"guid", entry.guid}, {"name", entry.name}};
        if (!entry.publisher.empty()) json["publisher"] = entry.publisher;
        array.push_back(std::move(json));
    }
    return nlohmann::ordered_json{{"signatures", array}}.dump(2) + "\n";
}

std::string signatureCsv(const std::vector<SignatureEntry>& signatures, CsvFormulas formulas) {
    std::string text = "guid,name,publisher\r\n";
    for (const SignatureEntry& entry : signatures)
        text += fmt::format("{},{},{}\r\n", csvValue(entry.guid, formulas), csvValue(entry.name, formulas),
                            csvValue(entry.publisher, formulas));
    return text;
}

}  // namespace zavcli
