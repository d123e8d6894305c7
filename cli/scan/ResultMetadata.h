// The metadata that a matched signature brings along as XML.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/Field.h"

namespace zavcli {

// The parts of the metadata that are not nested.
struct Metadata {
    std::vector<Field> texts;                  // children that hold only text, such as Publisher
    std::string matchedName;                   // the name that the scanner evaluated; not one of the texts
    std::vector<std::vector<Field>> evidence;  // the attributes of each Evidence: kind, source, name, version

    // The name of the product; empty if unknown.
    std::string name() const;
    // The first piece of evidence in words, such as "package bash 5.2.15 (/var/lib/dpkg/status)".
    std::string evidenceText() const;
};

// Empty if the text is not well-formed.
Metadata readMetadata(const std::string& xml);

}  // namespace zavcli
