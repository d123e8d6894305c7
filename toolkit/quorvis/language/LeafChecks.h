#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// What is wrong with the values of a leaf, so far as it can be told while its variables have no value.
std::vector<std::string> problemsOf(const Leaf& leaf, const Settings& settings);

// Whether the leaf searches a whole section for an expression that names no product, such as "[0-9]+\.[0-9]+".
bool findsAnyNumber(const Leaf& leaf);

}  // namespace toolkit::quorvis
