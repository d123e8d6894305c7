// Inventories as JSON documents in memory.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "cli/formats/JsonValues.h"
#include "cli/scan/HardwareInventory.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// The circumstances of a scan. Those of a hardware scan tell whether the scanner ran as root.
nlohmann::ordered_json scanJson(const HardwareInventory& inventory);
nlohmann::ordered_json scanJson(const SoftwareInventory& inventory);

// {"status": "partial", "reason": "permission"}
nlohmann::ordered_json statusJson(const GroupStatus& status);

// The fields of an instance of the group. Typed values of a group or field that is not in the catalogue, and values that do
// not have the form of their field, such as hashes, are texts.
nlohmann::ordered_json instanceJson(const std::string& group, const Instance& instance, JsonValues values);

// Signatures do not declare types, so typed values differ only in that unknown ones are null.
nlohmann::ordered_json resultJson(const MatchedSignature& match, JsonValues values);
nlohmann::ordered_json undecidedJson(const UndecidedSignature& signature);
nlohmann::ordered_json warningJson(const Warning& warning);

// The document on as many lines as it has members, or on one line. Bytes that are not UTF-8 become U+FFFD.
std::string indentedText(const nlohmann::ordered_json& document);
std::string lineText(const nlohmann::ordered_json& document);

}  // namespace zavcli
