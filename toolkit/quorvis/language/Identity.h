// The identity of a product: CPE 2.3 names and package URLs with variables.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/quorvis/language/Template.h"

namespace toolkit::quorvis {

struct Identity {
    enum class Kind : std::uint8_t { Cpe, Purl };
    Kind kind{};
    Template text;
};

// "Cpe"
std::string_view nameOf(Identity::Kind kind);

// Why the text does not have the form of its kind; none when it has.
std::optional<std::string> problemOf(const Identity& identity);

// The value of a variable; none when it has no value.
using IdentityValues = std::function<std::optional<std::string_view>(std::string_view name)>;

// The text with the variables replaced, and the values escaped as the kind requires. A component of a CPE name with a
// variable without a value becomes "*". A package URL with such a variable does not exist.
std::optional<std::string> filled(const Identity& identity, const IdentityValues& values);

}  // namespace toolkit::quorvis
