#pragma once

#include <string>
#include <vector>

#include "cli/scan/Model.h"

namespace zavcli {

// What a result's metadata says, as far as it is flat.
struct Metadata {
    std::vector<Field> texts;                  // children that hold nothing but text, such as Publisher
    std::string matchedName;                   // as the scanner evaluated it, which is none of the texts
    std::vector<std::vector<Field>> evidence;  // the attributes of each Evidence: kind, source, name, version

    // The text of that child; empty when there is none.
    std::string text(const std::string& name) const;
    // What the product is called; empty when it is not said.
    std::string name() const;
    // The first piece of evidence in words: "package bash 5.2.15 (/var/lib/dpkg/status)".
    std::string evidenceText() const;
};

// Empty for a text that is not well-formed.
Metadata readMetadata(const std::string& xml);

}  // namespace zavcli
