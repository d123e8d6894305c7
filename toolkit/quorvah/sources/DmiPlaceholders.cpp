#include "toolkit/quorvah/sources/DmiPlaceholders.h"

#include <algorithm>
#include <array>
#include <span>

#include "kest/Ascii.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr std::array<std::string_view, 91> kPlaceholders = {
    "none",
    "n/a",
    "na",
    "not available",
    "not applicable",
    "not specified",
    "not present",
    "not provided",
    "not set",
    "not defined",
    "unspecified",
    "undefined",
    "unknown",
    "invalid",
    "empty",
    "null",
    "(none)",
    "no dimm",
    "no asset tag",
    "no asset information",
    "default",
    "default string",
    "oem",
    "o.e.m.",
    "oem default string000",
    "to be filled by o.e.m.",
    "to be filled by o.e.m",
    "to be filled by oem",
    "tobefilledbyo.e.m.",
    "fill by oem",
    "filled by oem",
    "system manufacturer",
    "system product name",
    "system version",
    "system serial number",
    "system uuid",
    "sku",
    "sys sku",
    "system sku",
    "asset tag",
    "asset-1234567890",
    "serial number",
    "chassis manufacture",
    "chassis manufacturer",
    "chassis version",
    "chassis serial number",
    "chassis asset tag",
    "base board manufacturer",
    "base board product name",
    "base board version",
    "base board serial number",
    "base board asset tag",
    "type2 - board serial number",
    "type2 - board asset tag",
    "type2 - board vendor name1",
    "type2 - board version",
    "type2 - board product name1",
    "type1productconfigid",
    "type1family",
    "type1sku0",
    "o.e.m",
    "oem string",
    "tbd by oem",
    "to be defined by o.e.m",
    "to be defined by oem",
    "no data",
    "no serial",
    "no serial number",
    "not assigned",
    "not used",
    "not settable",
    "part number",
    "version",
    "product name",
    "manufacturer",
    "<bad index>",
    "<out of spec>",
    "bad index",
    "out of spec",
    "123456789",
    "0123456789",
    "1234567890",
    "9876543210",
    "0123456789abcdef",
    "01234567890123456789ab",
    "mb-1234567890",
    "atn12345678901234567",
    "bsn12345678901234567",
    "csn12345678901234567",
    "ssn12345678901234567",
    "to be filled by o.d.m.",
};

// The UUIDs of boards that were never given one: one in both orders of bytes, and one made of digits in a row.
constexpr std::string_view kSharedUuids[] = {"03000200-0400-0500-0006-000700080009",
                                             "00020003-0004-0005-0006-000700080009",
                                             "12345678-1234-5678-90ab-cddeefaabbcc"};

// Texts of memory modules that end with the number of the module, and may start with that of the array: "SerNum3",
// "A1_PartNum0", "Array1_PartNumber0".
constexpr std::string_view kNumbered[] = {"manufacturer", "sernum",      "serialnum",
                                          "serialnumber", "partnum",     "partnumber",
                                          "assettag",     "assettagnum", "modulepartnumber"};

// Whether the text repeats one of the `fillers`, apart from dashes: "00000000", "........", "FFFFFFFF-FFFF-...". A
// single character may be a real value.
bool isFill(std::string_view text, std::string_view fillers) {
    if (text.size() < 2 || fillers.find(text.front()) == std::string_view::npos) return false;
    return std::ranges::all_of(
        text, [&](char c) { return c == '-' || kest::asciiLower(c) == kest::asciiLower(text.front()); });
}

bool isOneOf(std::string_view text, std::span<const std::string_view> texts) {
    return std::ranges::any_of(
        texts, [text](std::string_view entry) { return kest::equalsIgnoringCase(text, entry); });
}

bool isNumbered(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789";
    constexpr std::string_view kArrays[] = {"a", "array", "dimm"};
    const auto withoutNumber = [kDigits](std::string_view name) {
        return name.substr(0, name.find_last_not_of(kDigits) + 1);
    };
    const std::string_view name = withoutNumber(text);
    if (name.size() == text.size()) return false;
    const std::size_t end = name.find('_');
    if (end == std::string_view::npos) return isOneOf(name, kNumbered);
    return isOneOf(withoutNumber(name.substr(0, end)), kArrays) && isOneOf(name.substr(end + 1), kNumbered);
}

}  // namespace

bool isPlaceholder(std::string_view text) {
    text = trimmed(text);
    return text.empty() || isFill(text, "0fFxX.-*_?") || isOneOf(text, kSharedUuids) ||
           isOneOf(text, kPlaceholders) || isNumbered(text);
}

}  // namespace toolkit::quorvah
