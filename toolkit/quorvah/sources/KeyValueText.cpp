#include "toolkit/quorvah/sources/KeyValueText.h"

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

std::vector<std::string> wordsOf(std::string_view text) {
    std::vector<std::string> words;
    for (std::string_view word = nextWord(text); !word.empty(); word = nextWord(text))
        words.emplace_back(word);
    return words;
}

std::string_view valueForKey(std::string_view text, std::string_view key) {
    for (std::string_view line; nextLine(text, line);) {
        if (!line.starts_with(key)) continue;
        const std::string_view rest = line.substr(key.size());
        if (rest.starts_with(':')) return trimmed(rest.substr(1));
        const std::string_view value = trimmed(rest);
        if (value.size() < rest.size()) return value;
    }
    return {};
}

Count kibOfKey(std::string_view meminfo, std::string_view key) {
    std::string_view words = valueForKey(meminfo, key);
    const std::string_view number = nextWord(words);
    return trimmed(words) == "kB" ? readCount(number) : std::nullopt;
}

}  // namespace toolkit::quorvah
