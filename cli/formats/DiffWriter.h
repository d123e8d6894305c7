// Writes how two hardware inventories differ.
#pragma once

#include <string>

#include "cli/diff/InventoryDiff.h"

namespace zavcli {

// For people; empty if there is no difference.
std::string diffText(const SavedInventory& before, const SavedInventory& after, const InventoryDiff& diff);

std::string diffJson(const SavedInventory& before, const SavedInventory& after, const InventoryDiff& diff);

}  // namespace zavcli
