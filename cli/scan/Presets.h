// Preset variables and scanner settings as they are typed.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "cli/scan/Library.h"

namespace zavcli {

struct Preset {
    std::string name;
    std::string value;
    std::string guid;  // of the signature that it is for; empty for all
};

struct Setting {
    std::string plugin;
    std::string attribute;
    std::string value;
};

// Identifiers of signatures, in lower case.
using Identifiers = std::set<std::string>;

// Understands NAME=VALUE and NAME=VALUE@GUID; what stands behind the last '@' is an identifier when it is one of
// these, in any case, or has the form of 8-4-4-4-12 hexadecimal digits, with or without braces. Throws Failure
// (bad usage).
Preset parsePreset(const std::string& text, const Identifiers& identifiers);

// The same for several. The library keeps one value a name, so a repeated name is bad usage.
std::vector<Preset> parsePresets(const std::vector<std::string>& texts, const Identifiers& identifiers);

// Understands PLUGIN.ATTRIBUTE=VALUE. Throws Failure (bad usage).
Setting parseSetting(const std::string& text);

// Hands them to the library, escaped as it wants them. Throws Failure.
void preset(Library& library, const std::vector<Preset>& presets, const std::vector<Setting>& settings);

}  // namespace zavcli
