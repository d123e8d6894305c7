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

// Searches the content of a file once for all expressions that are looked for in it, so that only those that match
// somewhere are searched for one by one.
class ContentFilters {
  public:
    // Registers an expression that will be looked for in a file.
    void announce(const std::string& path, std::string_view pattern, std::string_view flags);

    // False when an announced expression does not match in the content of the file. The first call for a file with
    // several announced expressions searches it. REQUIRES: the content of a file stays the same; the expression comes
    // from compileRegex().
    bool mayMatch(const std::string& path, const re2::RE2& regex, std::string_view content);

    void forget() { filters_.clear(); }
    // From now on mayMatch() is always true.
    void turnOff() { off_ = true; }

  private:
    struct Filter {
        std::vector<const re2::RE2*> regexes;
        bool searched = false;
        std::unordered_set<const re2::RE2*> silent;  // expressions that match nowhere
    };

    static void search(Filter& filter, std::string_view content);

    std::unordered_map<std::string, Filter> filters_;
    bool off_ = false;
};

}  // namespace toolkit::quorvis
