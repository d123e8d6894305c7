#include "cli/formats/SoftwareTableWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

#include "cli/formats/RowLayout.h"
#include "cli/formats/SoftwareDetailsWriter.h"
#include "cli/scan/ProductIdentity.h"
#include "cli/scan/Warnings.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

struct Product {
    ProductIdentity identity;
    bool isLanguagePackage = false;
};

bool precedes(const Product& one, const Product& other) {
    const auto key = [](const Product& product) {
        const ProductIdentity& identity = product.identity;
        return std::tuple(product.isLanguagePackage, lowerCase(identity.name), identity.version,
                          identity.place);
    };
    return key(one) < key(other);
}

std::string rowsText(const SoftwareInventory& inventory, const TableStyle& style) {
    if (inventory.results.empty()) return "";
    std::vector<Product> products;
    for (const MatchedSignature& match : inventory.results)
        products.push_back({identityOf(match), isLanguagePackage(match)});
    std::stable_sort(products.begin(), products.end(), precedes);
    std::vector<std::vector<std::string>> rows;
    rows.reserve(products.size());
    for (const auto& [identity, isLanguagePackage] : products)
        rows.push_back({identity.name, identity.version, identity.place, packageText(identity)});
    const std::vector<RowColumn> columns{{"Name", 16}, {"Version", 10}, {"Place", 16, true}, {"Package", 10}};
    return rowTable(columns, rows, style.fitted ? style.columns : 0, style.bold) + "\n";
}

std::string counted(std::size_t count, std::string_view one, std::string_view several) {
    if (count == 0) return fmt::format("no {}", several);
    return fmt::format("{} {}", count, count == 1 ? one : several);
}

std::string summary(const SoftwareInventory& inventory) {
    std::string text = counted(inventory.results.size(), "match", "matches");
    if (inventory.results.size() != inventory.matches) text += fmt::format(" of {} shown", inventory.matches);
    text += fmt::format("; {} in {}", counted(inventory.signatures, "signature", "signatures"),
                        counted(inventory.files, "file", "files"));
    if (!inventory.undecided.empty())
        text += fmt::format("; {} undecided", inventory.undecided.size());
    else if (!inventory.complete)
        text += "; something was left out";
    const auto unresolved = std::count_if(inventory.warnings.begin(), inventory.warnings.end(), isUnresolved);
    const std::size_t others = inventory.warnings.size() - static_cast<std::size_t>(unresolved);
    if (others > 0) text += fmt::format("; {}", counted(others, "warning", "warnings"));
    return text + "\n";
}

}  // namespace

std::string tableText(const SoftwareInventory& inventory, const TableStyle& style) {
    return (style.everything ? detailsText(inventory, style) : rowsText(inventory, style)) +
           summary(inventory);
}

}  // namespace zavcli
