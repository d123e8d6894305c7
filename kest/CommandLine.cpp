#include "kest/CommandLine.h"

namespace kest {

std::vector<std::string> splitCommandLine(std::string_view line) {
    std::vector<std::string> arguments;
    bool inQuotes = false;
    bool inArgument = false;
    for (const char character : line) {
        const bool isQuote = character == '"';
        const bool splits = !inQuotes && (character == ' ' || character == '\t');
        if (!splits && !inArgument) arguments.emplace_back();
        inArgument = !splits;
        if (isQuote) inQuotes = !inQuotes;
        if (!splits && !isQuote) arguments.back() += character;
    }
    return arguments;
}

}  // namespace kest
