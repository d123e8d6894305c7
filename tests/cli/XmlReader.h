#pragma once

#include <optional>
#include <string>
#include <vector>

#include "cli/scan/HardwareInventory.h"

namespace zavtest {

struct XmlInstance {
    std::string group;
    zavcli::Instance fields;
};

// The instances of an inventory document in document order. Nothing if it is not well-formed or has another structure.
std::optional<std::vector<XmlInstance>> readXml(const std::string& text);

}  // namespace zavtest
