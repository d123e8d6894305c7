// Letters of ASCII, independent of the host's locale.
#pragma once

#include <algorithm>
#include <string>
#include <string_view>

namespace kest {

template <class Character>
constexpr bool isAsciiUpper(Character character) {
    return character >= 'A' && character <= 'Z';
}

template <class Character>
constexpr Character asciiLower(Character character) {
    return isAsciiUpper(character) ? static_cast<Character>(character + ('a' - 'A')) : character;
}

// The value of a hexadecimal digit, -1 for any other character.
constexpr int hexDigit(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    const char letter = asciiLower(character);
    return letter >= 'a' && letter <= 'f' ? letter - 'a' + 10 : -1;
}

inline std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) c = asciiLower(c);
    return lower;
}

// Case-insensitive for ASCII letters only.
constexpr bool equalsIgnoringCase(std::string_view one, std::string_view other) {
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](char left, char right) { return asciiLower(left) == asciiLower(right); });
}

}  // namespace kest
