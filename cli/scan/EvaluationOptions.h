// Preset variables and scanner settings, parsed from the command line.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "cli/scan/LibraryHandle.h"

namespace zavcli {

struct Preset {
    std::string name;
    std::string value;
    std::string guid;  // the signature that it applies to; empty for all
};

struct Setting {
    std::string plugin;
    std::string attribute;
    std::string value;
};

// Identifiers of signatures in lower case.
using Identifiers = std::set<std::string>;

// Parses NAME=VALUE or NAME=VALUE@GUID. The text after the last '@' is an identifier if it is in
// `identifiers` (case-insensitive) or consists of 8-4-4-4-12 hexadecimal digits with or without braces;
// otherwise it belongs to the value.
// Throws Failure (bad usage).
Preset parsePreset(const std::string& text, const Identifiers& identifiers);

// Parses several presets. A repeated name is bad usage, because the library keeps one value per name.
std::vector<Preset> parsePresets(const std::vector<std::string>& texts, const Identifiers& identifiers);

// Parses PLUGIN.ATTRIBUTE=VALUE. Throws Failure (bad usage).
Setting parseSetting(const std::string& text);

// Passes the presets and settings to the library. Throws Failure.
void applyOptions(LibraryHandle& library, const std::vector<Preset>& presets,
                  const std::vector<Setting>& settings);

}  // namespace zavcli
