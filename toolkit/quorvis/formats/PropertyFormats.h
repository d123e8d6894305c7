// Reads the values of keys in common file formats. If a key occurs several times, the last one counts.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/formats/ParseLimits.h"

namespace toolkit::quorvis {

// Reads a properties file of Java.
std::optional<std::string> propertyValue(std::string_view text, std::string_view key,
                                         const ProgressCheck& checkProgress = {});

// Reads an ini file. An empty section stands for the keys before the first section. Quotes around the value are removed.
std::optional<std::string> iniValue(std::string_view text, std::string_view section, std::string_view key,
                                    const ProgressCheck& checkProgress = {});

struct JsonValue {
    std::optional<std::string> value;   // of a string, number or boolean
    std::optional<std::size_t> damage;  // offset of a syntax error
};
// Reads a JSON document. The key is a JSON pointer ("/packages/0/name") or names separated by dots ("packages.0.name").
JsonValue jsonValue(std::string_view text, std::string_view key, const ProgressCheck& checkProgress = {});

}  // namespace toolkit::quorvis
