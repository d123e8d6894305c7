#include "kest/Text.h"

#include <algorithm>

namespace kest {

std::string narrow(std::wstring_view wide) {
    std::string bytes(wide.size(), '\0');
    std::transform(wide.begin(), wide.end(), bytes.begin(),
                   [](wchar_t character) { return static_cast<char>(character); });
    return bytes;
}

std::wstring widen(std::string_view bytes) {
    std::wstring wide(bytes.size(), L'\0');
    std::transform(bytes.begin(), bytes.end(), wide.begin(),
                   [](char byte) { return static_cast<wchar_t>(static_cast<signed char>(byte)); });
    return wide;
}

}  // namespace kest
