#include "toolkit/quorvis/regex/ContentFilters.h"

#include <re2/re2.h>

#include <algorithm>
#include <iterator>
#include <span>

#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {

namespace {

using Regexes = std::vector<const RE2*>;

// The expressions that match somewhere in the content; all of them when the search fails. REQUIRES: all have this
// encoding.
Regexes matching(std::span<const RE2* const> regexes, RE2::Options::Encoding encoding,
                 std::string_view content) {
    std::vector<std::string_view> patterns;
    for (const RE2* const regex : regexes) patterns.emplace_back(regex->pattern());
    const std::optional<std::vector<int>> hits = RegexSet(patterns, encoding).matching(content);
    if (!hits) return {regexes.begin(), regexes.end()};
    Regexes found;
    for (const int hit : *hits) found.push_back(regexes[static_cast<std::size_t>(hit)]);
    return found;
}

}  // namespace

void ContentFilters::announce(const std::string& path, std::string_view pattern, std::string_view flags) {
    if (off_) return;
    std::string problem;
    const RE2* const regex = compileRegex(pattern, flags, problem);
    if (regex != nullptr) filters_[path].regexes.push_back(regex);
}

bool ContentFilters::mayMatch(const std::string& path, const re2::RE2& regex, std::string_view content) {
    const auto found = filters_.find(path);
    if (found == filters_.end()) return true;
    Filter& filter = found->second;
    if (!filter.searched) search(filter, content);
    return !filter.silent.contains(&regex);
}

void ContentFilters::search(Filter& filter, std::string_view content) {
    filter.searched = true;
    Regexes regexes = std::move(filter.regexes);
    std::ranges::sort(regexes);
    regexes.erase(std::unique(regexes.begin(), regexes.end()), regexes.end());
    if (regexes.size() < RegexSet::kMin) return;

    filter.silent.insert(regexes.begin(), regexes.end());
    for (const auto encoding : {RE2::Options::EncodingLatin1, RE2::Options::EncodingUTF8}) {
        Regexes alike;
        std::ranges::copy_if(regexes, std::back_inserter(alike), [encoding](const RE2* regex) {
            return regex->options().encoding() == encoding;
        });
        for (std::span<const RE2* const> rest = alike; !rest.empty();) {
            const std::size_t count = std::min(rest.size(), RegexSet::kMax);
            for (const RE2* const hit : matching(rest.first(count), encoding, content))
                filter.silent.erase(hit);
            rest = rest.subspan(count);
        }
    }
}

}  // namespace toolkit::quorvis
