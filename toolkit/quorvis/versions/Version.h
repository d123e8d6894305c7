#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

#include "toolkit/quorvis/leaves/Leaf.h"

namespace toolkit::quorvis {

enum class Scheme : std::uint8_t { Deb, Rpm, Semver, Pep440, Dotted, Int, Text };

std::optional<Scheme> schemeNamed(std::string_view name);

// None when one of them is no version of this scheme.
std::optional<std::weak_ordering> compareVersions(Scheme scheme, std::string_view left,
                                                  std::string_view right);

// Whether a version test is among the query's attributes.
bool hasVersionTest(const Query& query);

// Whether `version` passes all version tests of the query (equals, atLeast, above, atMost, below) in the scheme that
// it names, else in `usual`. Unknown when a version cannot be compared.
Truth passesVersionTests(const Query& query, Scheme usual, std::string_view version);

}  // namespace toolkit::quorvis
