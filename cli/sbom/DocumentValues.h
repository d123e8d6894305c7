// Values in the form that both formats of a bill of materials require.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace zavcli {

// Whether the text is a CPE name of version 2.3 with all of its parts.
bool isCpe23(std::string_view text);

// Whether the text is a package URL without characters that must be encoded.
bool isCleanPackageUrl(std::string_view text);

// Whether the text is an address of the web in plain ASCII.
bool isWebAddress(std::string_view text);

// The name in a text such as "Name <mail@example.com>".
std::string nameWithoutMail(std::string_view text);

// ISO 8601 in UTC.
std::string isoTime(std::time_t time);

}  // namespace zavcli
