#include "kest/ErrorText.h"

#include <cstring>

namespace kest {

namespace {

bool isUpper(char letter) {
    return letter >= 'A' && letter <= 'Z';
}

// "Permission denied" begins small inside a sentence, "RFS specific error" does not.
std::string insideASentence(std::string text) {
    const bool isWord = text.size() > 1 && isUpper(text[0]) && !isUpper(text[1]);
    if (isWord) text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

}  // namespace

std::string errorText(int error) {
    const char* const name = strerrorname_np(error);
    const char* const description = strerrordesc_np(error);
    if (name == nullptr || description == nullptr) return "error " + std::to_string(error);
    return std::string(name) + " (" + insideASentence(description) + ")";
}

}  // namespace kest
