#include "cli/diff/SavedInventory.h"

#include <algorithm>

namespace zavcli {

const Group* SavedInventory::find(std::string_view group) const {
    const auto found = std::ranges::find(groups, group, &Group::name);
    return found == groups.end() ? nullptr : &*found;
}

}  // namespace zavcli
