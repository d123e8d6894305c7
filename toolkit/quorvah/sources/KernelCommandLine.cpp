#include "toolkit/quorvah/sources/KernelCommandLine.h"

#include <algorithm>

#include "kest/Ascii.h"

namespace toolkit::quorvah {

namespace {

// Removes the next parameter from `line` and returns it. It may contain blanks within double quotes.
std::string_view nextParameter(std::string_view& line) {
    const std::size_t begin = line.find_first_not_of(" \t\n");
    line.remove_prefix(std::min(begin, line.size()));
    bool quoted = false;
    std::size_t end = 0;
    for (; end < line.size(); ++end) {
        if (line[end] == '"') quoted = !quoted;
        if (!quoted && (line[end] == ' ' || line[end] == '\t' || line[end] == '\n')) break;
    }
    const std::string_view parameter = line.substr(0, end);
    line.remove_prefix(end);
    return parameter;
}

bool isSecret(std::string_view key) {
    const std::string lower = kest::lowerCase(key);
    static constexpr std::string_view kMarks[] = {"passw",      "passphrase", "secret", "token",
                                                  "credential", "psk",        "apikey"};
    return std::ranges::any_of(
        kMarks, [&lower](std::string_view mark) { return lower.find(mark) != std::string::npos; });
}

}  // namespace

std::string bootParameter(std::string_view commandLine, std::string_view key) {
    std::string value;
    for (std::string_view parameter = nextParameter(commandLine); !parameter.empty();
         parameter = nextParameter(commandLine)) {
        if (parameter.starts_with(key) && parameter.substr(key.size()).starts_with('=')) {
            value = parameter.substr(key.size() + 1);
        }
    }
    std::erase(value, '"');
    return value;
}

std::string withoutSecrets(std::string_view commandLine) {
    std::string cut;
    for (std::string_view parameter = nextParameter(commandLine); !parameter.empty();
         parameter = nextParameter(commandLine)) {
        if (!cut.empty()) cut += ' ';
        const std::size_t equals = parameter.find('=');
        if (equals == std::string_view::npos || !isSecret(parameter.substr(0, equals))) {
            cut += parameter;
        } else {
            cut.append(parameter.substr(0, equals)).append("=***");
        }
    }
    return cut;
}

}  // namespace toolkit::quorvah
