#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace toolkit {

struct PackageQualifier {
    std::string_view name;
    std::string_view value;
};

// The package URL of one package, "pkg:deb/debian/bash@5.2.15-2%2Bb8?arch=amd64". An empty namespace,
// version or qualifier is left out. REQUIRES: the qualifiers are sorted by name.
std::string packageUrl(std::string_view type, std::string_view nameSpace, std::string_view name,
                       std::string_view version, std::initializer_list<PackageQualifier> qualifiers);

}  // namespace toolkit
