#pragma once

#include <span>
#include <string_view>

namespace toolkit::quorvah {

class GatheringContext;
class GroupData;

// One field of a group.
struct FieldDef {
    enum Trait : unsigned {
        kVolatile = 1,  // changes while the machine stays the same; --no-volatile empties it
        kPrivate = 2,   // identifies the machine or its users; --sanitize hashes each of its ;-joined values
        kBytewise = 4,  // only for a key: instances are sorted by its bytes, not by the numbers in it
        kCount = 8,     // a decimal number without a sign that fits into 63 bits
        kDecimal = 16,  // two such numbers with a point between them
    };

    std::string_view name;
    unsigned traits = 0;
};

// One kind of instances, such as disks. GroupTable.h lists all groups.
struct Group {
    const char* displayName;
    const char* xmlName;
    // The fields of every instance, in this order. The first field is the key that instances are sorted by.
    std::span<const FieldDef> fields = {};
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
