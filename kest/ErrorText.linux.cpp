#include "kest/ErrorText.h"

#include <cstring>

#include "kest/Ascii.h"

namespace kest {

namespace {

// "Permission denied" becomes lower case inside a sentence; "RFS specific error" begins with an acronym.
std::string lowerFirstWord(std::string text) {
    const bool isWord = text.size() > 1 && isAsciiUpper(text[0]) && !isAsciiUpper(text[1]);
    if (isWord) text[0] = asciiLower(text[0]);
    return text;
}

}  // namespace

std::string errorText(int error) {
    const char* const name = strerrorname_np(error);
    const char* const description = strerrordesc_np(error);
    if (name == nullptr || description == nullptr) return "error " + std::to_string(error);
    return std::string(name) + " (" + lowerFirstWord(description) + ")";
}

}  // namespace kest
