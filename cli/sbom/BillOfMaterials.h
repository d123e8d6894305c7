// The data model of a bill of materials, which the formats write. It depends on the scanned machine only, not on the
// scan: the same content gives the same bill. All text is UTF-8.
#pragma once

#include <string>
#include <vector>

#include "cli/sbom/Digest.h"
#include "cli/scan/Field.h"

namespace zavcli {

enum class ComponentKind {
    OperatingSystem,
    SystemPackage,   // installed by a package manager of the system
    Product,         // recognised by a signature
    LanguagePackage  // recognised by a signature that lists packages of a programming language
};

// Where a signature found something.
struct Occurrence {
    std::string path;
    std::string detail;  // the kind of evidence and what it tells, such as "elf 1.22.1"

    auto operator<=>(const Occurrence&) const = default;
};

struct Component {
    ComponentKind kind = ComponentKind::Product;
    std::string id;  // unique in the bill
    std::string name;
    std::string version;  // empty if unknown, like all below
    std::string supplier;
    std::string description;
    std::string home;
    std::string purl;
    std::string cpe;
    std::string owner;              // the identifier of the component that contains it
    std::vector<Field> properties;  // what the formats have no field for
    std::vector<Occurrence> occurrences;
};

struct HashedFile {
    std::string path;
    Hashes hashes;
};

struct BillOfMaterials {
    Component system;
    std::vector<Component> components;  // sorted by kind and identifier
    std::vector<HashedFile> files;      // sorted by path
    bool complete = true;               // false if something could not be read
};

}  // namespace zavcli
