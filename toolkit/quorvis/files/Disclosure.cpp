#include "toolkit/quorvis/files/Disclosure.h"

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvis {

namespace {

// Whether the modes of files do not bind this process.
bool seesEverything() {
    constexpr std::uint32_t kReading =
        (std::uint32_t{1} << CAP_DAC_OVERRIDE) | (std::uint32_t{1} << CAP_DAC_READ_SEARCH);
    if (::geteuid() == 0) return true;
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> held{};
    return ::syscall(SYS_capget, &header, held.data()) != 0 || (held[0].effective & kReading) != 0;
}

// With single slashes and without one at the end; empty for the top.
std::string tidied(std::string_view path) {
    std::string tidy;
    while (!path.empty()) {
        const std::string_view name = takeField(path, '/');
        if (!name.empty() && name != ".") tidy.append(1, '/').append(name);
    }
    return tidy;
}

}  // namespace

bool liesIn(std::string_view path, std::string_view directory) {
    return path.starts_with(directory) && (path.size() == directory.size() || path[directory.size()] == '/');
}

Disclosure::Disclosure(const Settings& settings) : Disclosure(settings, seesEverything()) {}

Disclosure::Disclosure(const Settings& settings, bool sees) : seesMore_(sees) {
    std::ranges::transform(settings.secrets.allow, std::back_inserter(trees_), tidied);
}

bool Disclosure::liesInTree(std::string_view path) const {
    return std::ranges::any_of(trees_, [path](const std::string& tree) { return liesIn(path, tree); });
}

// One that leads to a tree is searched for nothing else.
bool Disclosure::ofSearch(const struct stat& directory, std::string_view path) const {
    if (!seesMore_ || path.empty() || (directory.st_mode & S_IXOTH) != 0 || liesInTree(path)) return true;
    return std::ranges::any_of(trees_, [path](const std::string& tree) { return liesIn(tree, path); });
}

bool Disclosure::ofNames(const struct stat& directory, std::string_view path) const {
    constexpr mode_t kBoth = S_IROTH | S_IXOTH;
    return !seesMore_ || path.empty() || (directory.st_mode & kBoth) == kBoth || liesInTree(path);
}

bool Disclosure::ofContent(const struct stat& file, std::string_view path) const {
    return !seesMore_ || (file.st_mode & S_IROTH) != 0 || liesInTree(path);
}

}  // namespace toolkit::quorvis
