// The values of keys in files of common formats. Of a key that stands twice the last one counts.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/ParseLimits.h"

namespace toolkit::quorvis {

// In a properties file as Java reads it.
std::optional<std::string> propertyValue(std::string_view text, std::string_view key, const Tick& tick = {});

// In a section of an ini file; before all sections when it is empty. A pair of quotes round the value is no
// part of it.
std::optional<std::string> iniValue(std::string_view text, std::string_view section, std::string_view key,
                                    const Tick& tick = {});

struct JsonValue {
    std::optional<std::string> value;   // of a text, number or truth value
    std::optional<std::size_t> damage;  // where the document is wrong
};
// The key is a JSON pointer ("/packages/0/name") or names with dots between them ("packages.0.name").
JsonValue jsonValue(std::string_view text, std::string_view key, const Tick& tick = {});

}  // namespace toolkit::quorvis
