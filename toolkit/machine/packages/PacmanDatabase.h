#pragma once

#include <string_view>

namespace toolkit {

// The values of a pacman "desc" file, which describes one installed package. All texts are parts of the file. A missing value is
// empty.
struct PacmanPackage {
    std::string_view name;
    std::string_view version;  // [epoch:]upstream-release
    std::string_view architecture;
    std::string_view packager;
    std::string_view description;
    std::string_view base;         // the source package
    std::string_view installDate;  // seconds since 1970
    std::string_view size;         // bytes
};

// REQUIRES: `text` outlives the package.
PacmanPackage readPacmanDesc(std::string_view text);

}  // namespace toolkit
