#pragma once

#include <string>
#include <string_view>

namespace toolkit {

// What meta/snap.yaml tells of one snap. What is not given is empty.
struct SnapMeta {
    std::string name;
    std::string version;
    std::string summary;
    std::string architectures;  // joined with ';'
};

// Understands the part of YAML that these files use at their top level: plain, quoted and block scalars, and
// lists.
SnapMeta readSnapMeta(std::string_view text);

}  // namespace toolkit
