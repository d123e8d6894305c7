#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// Problems with the values of a leaf that can be found while its variables are not known.
std::vector<std::string> problemsOf(const Leaf& leaf, const Settings& settings);

// Warnings about a valid leaf that probably does not do what its author wants:
// - It searches a section of an executable for an expression that matches any version number: "[0-9]+\.[0-9]+".
// - An attribute that is compared literally looks like a pattern: path "/opt/*/x".
std::vector<std::string> warningsFor(const Leaf& leaf);

}  // namespace toolkit::quorvis
