#include "toolkit/quorvah/sources/DmiPlaceholders.h"

#include <algorithm>
#include <array>

#include "kest/Ascii.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr std::array<std::string_view, 82> kPlaceholders = {
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
};

// The UUID of boards that were never given one.
constexpr std::string_view kSharedUuid = "03000200-0400-0500-0006-000700080009";

// Whether the text repeats one of the `fillers`, apart from dashes: "00000000", "........", "FFFFFFFF-FFFF-...". A
// single character may be a real value.
bool isFill(std::string_view text, std::string_view fillers) {
    if (text.size() < 2 || fillers.find(text.front()) == std::string_view::npos) return false;
    return std::ranges::all_of(
        text, [&](char c) { return c == '-' || kest::asciiLower(c) == kest::asciiLower(text.front()); });
}

}  // namespace

bool isPlaceholder(std::string_view text) {
    text = trimmed(text);
    if (text.empty() || isFill(text, "0fFxX.-*_?") || kest::equalsIgnoringCase(text, kSharedUuid))
        return true;
    return std::ranges::any_of(
        kPlaceholders, [text](std::string_view entry) { return kest::equalsIgnoringCase(text, entry); });
}

}  // namespace toolkit::quorvah
