#include "toolkit/machine/text/ShellVariables.h"

#include <algorithm>

#include "toolkit/machine/text/Lines.h"

namespace toolkit {

namespace {

bool isName(std::string_view text) {
    const auto isNameCharacter = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
    };
    return !text.empty() && std::ranges::all_of(text, isNameCharacter);
}

// A word as the shell reads it: it ends at a blank outside of quotes.
std::string unquoted(std::string_view word) {
    std::string value;
    char quote = '\0';
    for (std::size_t i = 0; i < word.size(); ++i) {
        const char c = word[i];
        if (quote == '\0' && (c == ' ' || c == '\t' || c == ';')) break;
        if (c == quote) {
            quote = '\0';
        } else if (quote == '\0' && (c == '"' || c == '\'')) {
            quote = c;
        } else if (c == '\\' && quote != '\'' && i + 1 < word.size()) {
            const char next = word[++i];
            // In double quotes a backslash escapes only characters that are special there.
            const bool special = next == '"' || next == '\\' || next == '$' || next == '`';
            if (quote == '"' && !special) value += c;
            value += next;
        } else {
            value += c;
        }
    }
    return value;
}

}  // namespace

ShellVariables::ShellVariables(std::string_view text) {
    for (std::string_view line; nextLine(text, line);) {
        line = trimmed(line);
        if (line.starts_with("export ")) line = trimmed(line.substr(7));
        const std::size_t equals = line.find('=');
        if (equals == std::string_view::npos || !isName(line.substr(0, equals))) continue;
        assignments_.emplace_back(line.substr(0, equals), unquoted(line.substr(equals + 1)));
    }
}

std::string ShellVariables::value(std::string_view name) const {
    const auto found = std::find_if(assignments_.rbegin(), assignments_.rend(),
                                    [name](const auto& assignment) { return assignment.first == name; });
    return found == assignments_.rend() ? std::string() : found->second;
}

}  // namespace toolkit
