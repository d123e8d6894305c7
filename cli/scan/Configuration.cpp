#include "cli/scan/Configuration.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

constexpr std::array<std::string_view, 2> kKeys{"ZAV_HomeDirectory", "ZAV_Exploiters"};

// The part of the line in front of "=", without blanks around it and in lower case: the key that was meant.
std::string meantKey(std::string_view line) {
    const std::string_view key = line.substr(0, line.find('='));
    const std::size_t begin = key.find_first_not_of(" \t");
    if (begin == std::string_view::npos) return "";
    return lowerCase(key.substr(begin, key.find_last_not_of(" \t") - begin + 1));
}

// What is wrong with a line that sets the key; empty when nothing is.
std::string fault(std::string_view line, std::string_view key) {
    const std::string lead = fmt::format("{} =", key);
    if (!line.starts_with(lead)) return fmt::format("must begin with exactly '{}'", lead);
    const std::string_view value = line.substr(lead.size());
    if (value.ends_with('\r')) return "ends in a carriage return, which becomes part of the value";
    if (value.ends_with(' ') || value.ends_with('\t'))
        return "ends in blanks, which become part of the value";
    if (value.starts_with("  ") || value.starts_with('\t')) return "must have at most one blank behind '='";
    return value.find_first_not_of(' ') == std::string_view::npos ? "has no value" : "";
}

}  // namespace

std::vector<std::string> configurationFaults(std::istream& lines) {
    std::vector<std::string> faults;
    bool named = false;
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        const std::string meant = meantKey(line);
        const auto* key = std::find_if(kKeys.begin(), kKeys.end(),
                                       [&](std::string_view other) { return lowerCase(other) == meant; });
        if (key == kKeys.end()) continue;
        named = named || *key == kKeys.front();
        const std::string wrong = fault(line, *key);
        if (!wrong.empty()) faults.push_back(fmt::format("line {} {}", number, wrong));
    }
    if (!named) faults.push_back(fmt::format("it has no line '{} = DIRECTORY'", kKeys.front()));
    return faults;
}

}  // namespace zavcli
