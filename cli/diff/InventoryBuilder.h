// Collects what the readers of saved inventories find.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "cli/diff/SavedInventory.h"

namespace zavcli {

class InventoryBuilder {
  public:
    void beginGroup(std::string_view name) { current_ = indexOf(name); }
    void beginInstance() { inventory_.groups[current_].instances.emplace_back(); }
    // As the library does, keeps only the first value of a repeated name.
    void addField(std::string_view name, std::string value);
    void setStatus(std::string_view group, GroupStatus status) {
        inventory_.groups[indexOf(group)].status = std::move(status);
    }
    SavedInventory& inventory() { return inventory_; }

    // Adds what follows from all of the file.
    SavedInventory finish();

  private:
    std::size_t indexOf(std::string_view name);
    void addScanInfo();

    SavedInventory inventory_;
    std::unordered_map<std::string, std::size_t> indices_;
    std::size_t current_ = 0;
};

// Both throw BadInventory.
SavedInventory parseJsonInventory(std::string_view content);
SavedInventory parseXmlInventory(std::string_view content);

}  // namespace zavcli
