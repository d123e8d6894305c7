#pragma once

#include <string>

namespace zavcli {

// A JSON document as YAML in block style. A string that YAML 1.1 or 1.2 would take for a number, a boolean, a time or null is
// quoted, so that every reader sees the same types as in JSON.
std::string yamlText(const std::string& json);

}  // namespace zavcli
