#include "cli/diff/InventoryBuilder.h"

#include <algorithm>
#include <utility>

#include "schema/Catalogue.h"
#include "schema/FieldForm.h"

namespace zavcli {

namespace {

constexpr const char* kScanInfoName = "ScanInfo";

// Whether there are private values and all of them are hashes.
bool isSanitized(const std::vector<Group>& groups) {
    bool any = false;
    for (const Group& group : groups) {
        const schema::Group* const known = schema::findGroup(group.name);
        if (known == nullptr) continue;
        for (const Instance& instance : group.instances) {
            for (const Field& field : instance) {
                if (field.value.empty()) continue;
                const schema::Field* const definition = schema::findField(*known, field.name);
                // A path without private names has no hashes.
                if (definition == nullptr || definition->privacy == schema::Privacy::Public ||
                    definition->privacy == schema::Privacy::Path)
                    continue;
                if (!schema::hasSanitizedForm(*definition, field.value)) return false;
                any = true;
            }
        }
    }
    return any;
}

}  // namespace

std::size_t InventoryBuilder::indexOf(std::string_view name) {
    const auto [place, added] = indices_.try_emplace(std::string(name), inventory_.groups.size());
    if (added) inventory_.groups.push_back({0, std::string(name), {}, {}});
    return place->second;
}

void InventoryBuilder::addField(std::string_view name, std::string value) {
    Instance& instance = inventory_.groups[current_].instances.back();
    if (findField(instance, name) == nullptr) instance.push_back({std::string(name), std::move(value)});
}

// The groups that were requested but have no instances, and the status of each group.
void InventoryBuilder::addScanInfo() {
    const auto found = indices_.find(kScanInfoName);
    if (found == indices_.end() || inventory_.groups[found->second].instances.empty()) return;
    inventory_.scanInfo = inventory_.groups[found->second].instances.front();
    const std::string requested = valueOf(inventory_.scanInfo, "GroupsRequested");
    for (std::string_view rest = requested; !rest.empty();) {
        const std::string_view name = rest.substr(0, rest.find(';'));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        if (!name.empty()) indexOf(name);
    }
    for (Group& group : inventory_.groups) {
        const GroupStatus status = statusOf(group.name, inventory_.scanInfo);
        if (status.state != GroupState::Unknown) group.status = status;
    }
    const std::string privileged = valueOf(inventory_.scanInfo, "Privileged");
    if (!privileged.empty()) inventory_.privileged = privileged == "true";
    inventory_.ofTree = inventory_.ofTree || !valueOf(inventory_.scanInfo, "RootPath").empty();
    if (inventory_.time.empty()) inventory_.time = valueOf(inventory_.scanInfo, "StartTime");
}

SavedInventory InventoryBuilder::finish() {
    addScanInfo();
    std::erase_if(inventory_.groups, [](const Group& group) { return group.name == kScanInfoName; });
    inventory_.sanitized = isSanitized(inventory_.groups);
    return std::move(inventory_);
}

}  // namespace zavcli
