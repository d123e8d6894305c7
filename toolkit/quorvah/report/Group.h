#pragma once

#include <span>
#include <string_view>

namespace toolkit::quorvah {

class Report;
class Scan;

// One field of a group.
struct FieldDef {
    enum Trait : unsigned {
        kVolatile = 1,  // changes without the machine being changed: --no-volatile empties it
        kPrivate = 2,   // tells the machine or its users apart: --sanitize hashes each of its ;-joined values
        kBytewise = 4,  // as a key: sorted by bytes (hexadecimal texts) rather than by the numbers in it
    };

    std::string_view name;
    unsigned traits = 0;
};

// One kind of instances. Each group is defined in a source file of its own and known by its line in
// GroupTable.cpp.
struct Group {
    const char* displayName;
    const char* xmlName;
    // Every instance has all of them in this order. The first one is the key that instances are sorted by.
    std::span<const FieldDef> fields;
    // Adds the group's instances to the report; null for a group that this scanner cannot gather.
    void (*gather)(Scan& scan, Report& report);
    // Whether it only reads plain files, which neither hang nor take long.
    bool plainFiles = false;
    // The files that tell whether there are instances; one of them is enough. Where the scanned tree has none of them, a
    // group without instances was not looked for. Empty for a group that says so itself.
    std::span<const char* const> sources = {};
    // What a machine would have to be to have this group, when this one is not: "windows". Null for all others.
    const char* elsewhere = nullptr;
};

}  // namespace toolkit::quorvah
