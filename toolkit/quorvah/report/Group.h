#pragma once

#include <span>
#include <string_view>

#include "schema/Group.h"

namespace toolkit::quorvah {

class GatheringContext;
class GroupData;

// One kind of instances, such as disks. GroupTable.h lists all groups.
struct Group {
    const char* displayName;
    const char* xmlName;
    // The fields of every instance, in this order. Instances are sorted by the first one.
    std::span<const schema::Field> fields = {};
    // Adds the group's instances to `data`. Null for a group that this scanner does not gather.
    void (*gather)(GatheringContext& context, GroupData& data) = nullptr;
    // Whether it reads plain files only, which neither block nor take long.
    bool readsPlainFilesOnly = false;
    // The files that the instances are read from. If a tree has none of them, the absence of instances means nothing.
    // Empty for a group that reports missing sources itself.
    std::span<const char* const> sources = {};
    // Why no machine of this kind has the group: "windows". Null if it may have it.
    const char* otherPlatform = nullptr;
};

}  // namespace toolkit::quorvah
