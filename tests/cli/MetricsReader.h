#pragma once

#include <map>
#include <optional>
#include <regex>
#include <set>
#include <sstream>
#include <string>

namespace zavtest {

// The samples of a text in the exposition format of Prometheus, as text by name and labels. Nothing if the text is not valid: each
// metric has one HELP and one TYPE, its samples follow them without others between, no sample occurs twice, and the last line ends.
inline std::optional<std::map<std::string, std::string>> readMetrics(const std::string& text) {
    static const std::regex kHelp("# HELP ([a-z_][a-z0-9_]*) [^\\\\]+");
    static const std::regex kType("# TYPE ([a-z_][a-z0-9_]*) (gauge|counter)");
    static const std::regex kSample(
        "([a-z_][a-z0-9_]*)(\\{[a-z_]+=\"(?:[^\"\\\\]|\\\\[\\\\\"n])*\"(?:,[a-z_]+=\"(?:[^\"\\\\]|\\\\["
        "\\\\\"n])*"
        "\")*\\})? -?[0-9]+(\\.[0-9]+)?");
    if (!text.ends_with('\n')) return std::nullopt;
    std::map<std::string, std::string> samples;
    std::set<std::string> described;
    std::string helped;
    std::string metric;
    std::istringstream lines(text);
    std::smatch match;
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_match(line, match, kHelp)) {
            helped = match[1];
            if (!described.insert(helped).second) return std::nullopt;
        } else if (std::regex_match(line, match, kType)) {
            metric = match[1];
            if (metric != helped) return std::nullopt;
        } else if (std::regex_match(line, match, kSample)) {
            if (match[1] != metric) return std::nullopt;
            const std::size_t blank = line.rfind(' ');
            if (!samples.emplace(line.substr(0, blank), line.substr(blank + 1)).second) return std::nullopt;
        } else {
            return std::nullopt;
        }
    }
    return samples;
}

}  // namespace zavtest
