// Fuzzes the splitting of command lines: all characters except quotes and separators are kept, none is added, and splitting
// the quoted arguments gives the same arguments again.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "kest/CommandLine.h"

namespace {

bool isPlain(char character) {
    return character != '"' && character != ' ' && character != '\t';
}

std::size_t plainCharacters(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), isPlain));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view line(reinterpret_cast<const char*>(data), size);
    const std::vector<std::string> arguments = kest::splitCommandLine(line);
    std::size_t plain = 0;
    std::string quoted;
    for (const std::string& argument : arguments) {
        if (argument.find('"') != std::string::npos) std::abort();
        plain += plainCharacters(argument);
        quoted += '"' + argument + "\" ";
    }
    if (plain != plainCharacters(line)) std::abort();
    if (kest::splitCommandLine(quoted) != arguments) std::abort();
    return 0;
}
