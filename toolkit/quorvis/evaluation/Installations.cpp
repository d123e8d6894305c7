#include "toolkit/quorvis/evaluation/Installations.h"

#include <algorithm>
#include <array>

namespace toolkit::quorvis {

namespace {

bool isPartOfInstallation(std::string_view name) {
    constexpr std::array<std::string_view, 9> kNames = {"bin",    "sbin",    "lib",   "lib32",  "lib64",
                                                        "libx32", "libexec", "share", "include"};
    return std::ranges::find(kNames, name) != kNames.end();
}

}  // namespace

std::string installationOf(std::string_view path) {
    const std::size_t file = path.rfind('/');
    if (file == std::string_view::npos) return {};
    const std::string_view directory = path.substr(0, file);
    std::string_view above = directory;
    for (std::string_view rest = directory; !rest.empty();) {
        const std::size_t slash = rest.rfind('/');
        if (slash == std::string_view::npos) break;
        const bool found = isPartOfInstallation(rest.substr(slash + 1));
        rest = rest.substr(0, slash);
        if (!found) continue;
        above = rest;
        break;
    }
    if (above.ends_with("/usr")) above.remove_suffix(4);
    return above.empty() ? "/" : std::string(above);
}

bool Installations::add(const Part& part) {
    std::set<std::string>& known = versions_[{part.name, installationOf(part.path), part.owned}];
    if (part.version.empty() && !known.empty()) return false;
    return known.insert(part.version).second;
}

}  // namespace toolkit::quorvis
