#pragma once

#include <string>
#include <string_view>

namespace zavcli {

// The text as it stands in an XML element or between the double quotes of an attribute. Characters that XML
// 1.0 cannot carry become U+FFFD.
std::string escapedXml(std::string_view text);

}  // namespace zavcli
