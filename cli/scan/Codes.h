#pragma once

#include <string>
#include <string_view>

namespace zavcli {

// What a return code of the library means, as a sentence without capital and full stop that can follow "zav:
// ".
std::string_view sentence(int code);

// Throws Failure with the code's sentence unless it is success.
void require(int code);

// How a scanner that failed ended, from the status that the library tells of it.
std::string howEnded(int status, const std::string& scanner);

}  // namespace zavcli
