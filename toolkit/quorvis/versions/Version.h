#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

namespace toolkit::quorvis {

enum class Scheme : std::uint8_t { Deb, Rpm, Semver, Pep440, Dotted, Int, Text };

std::optional<Scheme> schemeNamed(std::string_view name);

// None if one of them is not a valid version of the scheme.
std::optional<std::weak_ordering> compareVersions(Scheme scheme, std::string_view left,
                                                  std::string_view right);

}  // namespace toolkit::quorvis
