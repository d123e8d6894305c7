// Finds what a user may have meant by a misspelt name.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zavcli {

// The name in lower case, without blanks, '-' and '_'.
std::string normalizedName(std::string_view name);

// Up to three of the names that are similar to the text, the most similar first.
std::vector<std::string> similarNames(const std::vector<std::string>& names, std::string_view text);

}  // namespace zavcli
