#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace toolkit {

// What the header of an installed rpm tells. The texts are parts of the header; what it does not tell is
// empty or 0.
struct RpmPackage {
    std::string_view name;
    std::string_view version;
    std::string_view release;
    bool hasEpoch = false;
    std::uint64_t epoch = 0;
    std::string_view architecture;
    std::string_view vendor;
    std::string_view summary;
    std::string_view group;
    std::string_view sourceRpm;
    std::uint64_t installTime = 0;  // seconds since 1970
    std::uint64_t size = 0;         // bytes
};

// Reads a header as the rpm database holds it. False when it is broken or names no package.
bool readRpmHeader(std::string_view header, RpmPackage& package);

// "bash" of "bash-5.1.8-6.el9.src.rpm"; empty when the name is not made like that.
std::string_view nameOfSourceRpm(std::string_view sourceRpm);

}  // namespace toolkit
