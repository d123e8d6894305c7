#pragma once

#include <optional>
#include <string>

#include "cli/suggest/Exploration.h"

namespace zavcli {

// What a draft is made of.
struct DraftSubject {
    std::string path;     // of the program or directory
    std::string product;  // as productNameOf() returns it
};

// The pattern of the places at which the product may be found: those of programs for a program in one of them, else the
// path with other versions.
std::string placesPattern(const std::string& path);

// The text that says most: it has the product's name, the commonest version and few other words. Null if there is none.
const VersionText* bestText(const Findings& findings, const std::string& product);

// A signature file with one signature, and comments with everything else that was found. The signature has no version if
// none was found.
std::string draftText(const DraftSubject& subject, const Findings& findings);

}  // namespace zavcli
