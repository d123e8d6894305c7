// Package URLs, such as "pkg:deb/debian/bash@5.2.15-2?arch=amd64".
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/Field.h"

namespace zavcli {

struct PackageUrl {
    std::string type;  // in lower case
    std::string nameSpace;
    std::string name;
    std::string version;
    std::vector<Field> qualifiers;
    std::string subpath;
};

// The parts without their percent encoding. Nothing if the text is not a package URL.
std::optional<PackageUrl> parsePackageUrl(std::string_view text);

// Whether packages of this type are those of a programming language, such as npm, and not those of a system.
bool isLanguageType(std::string_view type);

}  // namespace zavcli
