#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace toolkit {

// The values in the header of an installed rpm. The texts are parts of the header. Missing values are empty or 0.
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

// Parses a header in the form of the rpm database. False when it is damaged or has no name.
bool readRpmHeader(std::string_view header, RpmPackage& package);

// "bash" for "bash-5.1.8-6.el9.src.rpm"; empty for names that are not of this form.
std::string_view nameOfSourceRpm(std::string_view sourceRpm);

}  // namespace toolkit
