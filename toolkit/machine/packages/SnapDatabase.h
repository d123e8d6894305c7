#pragma once

#include <string>
#include <string_view>

namespace toolkit {

// The values of a snap's meta/snap.yaml. A missing value is empty.
struct SnapMeta {
    std::string name;
    std::string version;
    std::string summary;
    std::string architectures;  // joined with ';'
};

// Parses the subset of YAML that these files use at their top level: plain, quoted and block scalars, and lists.
SnapMeta readSnapMeta(std::string_view text);

}  // namespace toolkit
