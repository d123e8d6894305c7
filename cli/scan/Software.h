// A software inventory in memory: what an evaluation yields and what every output format is written from. All
// text is UTF-8.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "cli/scan/Model.h"

namespace zavcli {

// One matched signature.
struct Finding {
    std::string guid;
    std::string name;              // empty when none is known
    std::vector<Field> variables;  // ascending by name
    std::string metadata;          // as XML; empty when there is none
};

// Something that the scanner could not examine, as an element of its own words.
struct Warning {
    std::vector<Field> attributes;  // code, severity, guid, leaf, path, count and others
    std::string text;
};

struct Undecided {
    std::string guid;
    std::string name;  // empty when none is known
};

struct SoftwareReport {
    ScanFacts scan;
    std::size_t files = 0;       // signatures files that were evaluated
    std::size_t signatures = 0;  // in them
    std::size_t matches = 0;     // before a choice of identifiers
    std::vector<Finding> results;
    std::vector<Warning> warnings;
    std::vector<Undecided> undecided;  // signatures of which it is unknown whether they match
    bool complete = true;              // whether nothing that was asked for is unknown or was left out
    std::string fault;                 // why the warnings are not complete; empty when they are
};

}  // namespace zavcli
