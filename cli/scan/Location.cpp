#include "cli/scan/Location.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>

namespace zavcli {

namespace {

constexpr std::string_view kHome = "ZAV_HomeDirectory =";
constexpr std::string_view kProducts = "ZAV_Exploiters =";
constexpr std::size_t kLine = 1024;  // a longer line counts as several, the last byte is for the end

struct Close {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// The text behind the key and one blank, if there is one.
std::string_view valueOf(std::string_view line, std::string_view key) {
    line.remove_prefix(key.size());
    return line.substr(line.starts_with(' ') ? 1 : 0);
}

bool lists(std::string_view names, std::string_view wanted) {
    for (;;) {
        const std::size_t end = names.find(':');
        if (!wanted.empty() && names.substr(0, end) == wanted) return true;
        if (end == std::string_view::npos) return false;
        names.remove_prefix(end + 1);
    }
}

void readLine(std::string_view line, const std::string& product, Location& location) {
    if (line.ends_with('\n')) line.remove_suffix(1);
    if (line.starts_with(kHome)) location.toolkit = std::string(valueOf(line, kHome)) + "/bin";
    if (line.starts_with(kProducts) && lists(valueOf(line, kProducts), product)) location.registered = true;
}

void collapseSlashes(std::string& path) {
    for (std::size_t at = path.find("//"); at != std::string::npos; at = path.find("//", at))
        path.erase(at, 1);
}

}  // namespace

Location readLocation(const std::string& path, const std::string& product) {
    Location location;
    const std::unique_ptr<std::FILE, Close> file(std::fopen(path.c_str(), "re"));
    if (file == nullptr) return location;
    location.readable = true;
    std::array<char, kLine> line{};
    while (std::fgets(line.data(), line.size(), file.get()) != nullptr)
        readLine(line.data(), product, location);
    collapseSlashes(location.toolkit);
    return location;
}

std::string temporaryPath() {
    const char* path = std::getenv("TEMP");
    if (path == nullptr) path = std::getenv("TMP");
    std::string normal = path == nullptr ? "/tmp" : path;
    collapseSlashes(normal);
    return normal;
}

}  // namespace zavcli
