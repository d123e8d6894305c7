// The data model of a software inventory, which the evaluation fills and the formats write. All text is UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/scan/Field.h"
#include "cli/scan/ScanFacts.h"

namespace zavcli {

struct MatchedSignature {
    std::string guid;
    std::string name;              // empty if unknown
    std::vector<Field> variables;  // sorted by name
    std::string metadata;          // XML; empty if there is none
};

// Something that the scanner could not examine.
struct Warning {
    std::vector<Field> attributes;  // code, severity, guid, leaf, path, count and others
    std::string text;
};

// A signature of which it is unknown whether it matches.
struct UndecidedSignature {
    std::string guid;
    std::string name;     // empty if unknown
    std::string because;  // codes of warnings, separated by blanks; empty if unknown
};

struct SoftwareInventory {
    ScanFacts scan;
    std::size_t files = 0;       // the number of evaluated signature files
    std::size_t signatures = 0;  // the number of signatures in them
    std::size_t matches = 0;     // the number of matches before filtering by identifier
    std::vector<MatchedSignature> results;
    std::vector<Warning> warnings;
    std::vector<UndecidedSignature> undecided;
    bool complete = true;  // whether no requested result is unknown or missing
    std::string fault;     // why the list of warnings is incomplete; empty if it is complete
};

}  // namespace zavcli
