#pragma once

#include <string_view>

namespace toolkit {

// What a pacman "desc" file tells of one installed package. All texts are parts of the file; what is not
// given is empty.
struct PacmanPackage {
    std::string_view name;
    std::string_view version;  // [epoch:]upstream-release
    std::string_view architecture;
    std::string_view packager;
    std::string_view description;
    std::string_view base;         // what it was built from
    std::string_view installDate;  // seconds since 1970
    std::string_view size;         // bytes
};

// The views live as long as `text`.
PacmanPackage readPacmanDesc(std::string_view text);

}  // namespace toolkit
