#pragma once

#include <strings.h>

#include <string_view>

namespace toolkit {

// Whether two texts differ at most in the case of ASCII letters.
inline bool sameButForCase(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return false;
    return left.empty() || ::strncasecmp(left.data(), right.data(), left.size()) == 0;
}

}  // namespace toolkit
