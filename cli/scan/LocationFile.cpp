#include "cli/scan/LocationFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <optional>
#include <string_view>

#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr std::array<std::string_view, 2> kKeys{"ZAV_HomeDirectory", "ZAV_Exploiters"};
constexpr std::size_t kMaxLine = 1024;  // with the terminating zero; a longer line is read as several lines

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// The value if the line sets the key, without the one blank that may follow "=".
std::optional<std::string_view> valueIn(std::string_view line, std::string_view key) {
    const std::string lead = fmt::format("{} =", key);
    if (!line.starts_with(lead)) return std::nullopt;
    line.remove_prefix(lead.size());
    return line.substr(line.starts_with(' ') ? 1 : 0);
}

// Whether the name is in a list that is separated by colons.
bool contains(std::string_view names, std::string_view wanted) {
    for (;;) {
        const std::size_t end = names.find(':');
        if (!wanted.empty() && names.substr(0, end) == wanted) return true;
        if (end == std::string_view::npos) return false;
        names.remove_prefix(end + 1);
    }
}

void readLine(std::string_view line, const std::string& product, LocationFile& file) {
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (const auto home = valueIn(line, kKeys[0])) file.toolkit = std::string(*home) + "/bin";
    if (const auto products = valueIn(line, kKeys[1]))
        file.registered = file.registered || contains(*products, product);
}

// The text before "=" in lower case and without surrounding blanks: the key that the line is meant to set.
std::string meantKey(std::string_view line) {
    const std::string_view key = line.substr(0, line.find('='));
    const std::size_t begin = key.find_first_not_of(" \t");
    if (begin == std::string_view::npos) return "";
    return lowerCase(key.substr(begin, key.find_last_not_of(" \t") - begin + 1));
}

// What is wrong with a line that sets the key; empty if nothing is.
std::string faultIn(std::string_view line, std::string_view key) {
    const std::string lead = fmt::format("{} =", key);
    if (!line.starts_with(lead)) return fmt::format("must begin with exactly '{}'", lead);
    const std::string_view value = line.substr(lead.size());
    if (value.ends_with('\r')) return "ends in a carriage return, which becomes part of the value";
    if (value.ends_with(' ') || value.ends_with('\t'))
        return "ends in blanks, which become part of the value";
    if (value.starts_with("  ") || value.starts_with('\t')) return "must have at most one blank after '='";
    return value.find_first_not_of(' ') == std::string_view::npos ? "has no value" : "";
}

}  // namespace

void collapseSlashes(std::string& path) {
    for (std::size_t at = path.find("//"); at != std::string::npos; at = path.find("//", at))
        path.erase(at, 1);
}

LocationFile readLocationFile(const std::string& path, const std::string& product) {
    LocationFile result;
    const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "re"));
    if (file == nullptr) return result;
    result.readable = true;
    std::array<char, kMaxLine> line{};
    while (std::fgets(line.data(), line.size(), file.get()) != nullptr)
        readLine(line.data(), product, result);
    collapseSlashes(result.toolkit);
    return result;
}

std::vector<std::string> locationFileFaults(std::istream& lines) {
    std::vector<std::string> faults;
    bool named = false;
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        const std::string meant = meantKey(line);
        const auto* key = std::find_if(kKeys.begin(), kKeys.end(),
                                       [&](std::string_view other) { return lowerCase(other) == meant; });
        if (key == kKeys.end()) continue;
        named = named || *key == kKeys.front();
        const std::string fault = faultIn(line, *key);
        if (!fault.empty()) faults.push_back(fmt::format("line {} {}", number, fault));
    }
    if (!named) faults.push_back(fmt::format("it has no line '{} = DIRECTORY'", kKeys.front()));
    return faults;
}

}  // namespace zavcli
