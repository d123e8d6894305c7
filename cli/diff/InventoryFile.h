// Reads files with hardware inventories.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "cli/diff/SavedInventory.h"

namespace zavcli {

// Files may be large, but not so large that reading them exhausts the memory.
constexpr std::size_t kMaxInventorySize = std::size_t{256} << 20;

// Reads a file, or standard input for "-". Throws Failure, which names the file and the line.
SavedInventory readSavedInventory(const std::string& path);

// Reads the content of a file. Throws BadInventory.
SavedInventory parseInventory(std::string_view content);

}  // namespace zavcli
