#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace re2 {
class RE2;
}

namespace toolkit::quorvis {

// Searches a file for many expressions at once, to tell which of them are worth a search of their own.
class ContentFilters {
  public:
    // Tells beforehand that an expression will be looked for in a file.
    void announce(const std::string& path, std::string_view pattern, std::string_view flags);

    // Whether an expression can match in the content of a file; false only for one that was announced. The
    // first question about a file with several announced expressions searches it. REQUIRES: the content of a
    // file stays the same; the expression comes from compileRegex().
    bool mayMatch(const std::string& path, const re2::RE2& regex, std::string_view content);

    void forget() { filters_.clear(); }
    // Every expression may match then.
    void turnOff() { off_ = true; }

  private:
    struct Filter {
        std::vector<const re2::RE2*> regexes;
        bool searched = false;
        std::unordered_set<const re2::RE2*> silent;  // those that match nowhere
    };

    static void search(Filter& filter, std::string_view content);

    std::unordered_map<std::string, Filter> filters_;
    bool off_ = false;
};

}  // namespace toolkit::quorvis
