#include "toolkit/quorvah/scan/RecordFilter.h"

#include <strings.h>

#include <algorithm>
#include <array>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/CupsPrinters.h"
#include "toolkit/quorvah/sources/KernelCommandLine.h"

namespace toolkit::quorvah {

namespace {

template <typename Change>
std::string changeLines(std::string_view text, Change change) {
    std::string result;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        result += change(text.substr(0, end));
        if (end < text.size()) result += '\n';
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

// "name:hash:19000:...": whether the account is locked is told by the first character.
std::string withoutHash(std::string_view line) {
    const std::size_t begin = line.find(':');
    if (begin == std::string_view::npos) return std::string(line);
    const std::size_t end = std::min(line.find(':', begin + 1), line.size());
    const std::string_view hash = line.substr(begin + 1, end - begin - 1);
    std::string_view kept = hash;
    // Texts such as "!*" are no hashes.
    if (hash.find_first_not_of("!*") != std::string_view::npos)
        kept = hash.starts_with('!') ? "!" : hash.starts_with('*') ? "*" : "x";
    return std::string(line.substr(0, begin + 1)).append(kept).append(line.substr(end));
}

std::string withoutUriPassword(std::string_view line) {
    constexpr std::string_view kKey = "DeviceURI ";
    if (!line.starts_with(kKey)) return std::string(line);
    return std::string(kKey) + withoutCredentials(line.substr(kKey.size()));
}

// Masks what follows a word such as passwd='...', cipassword: ... or <password>...</password>.
std::string withoutPasswordValues(std::string_view line) {
    constexpr std::string_view kWord = "passw";
    std::string result;
    for (;;) {
        std::size_t at = 0;
        while (at + kWord.size() <= line.size() &&
               ::strncasecmp(line.data() + at, kWord.data(), kWord.size()) != 0)
            ++at;
        if (at + kWord.size() > line.size()) return result.append(line);
        const std::size_t separator = std::min(line.find_first_of("=:>", at), line.size());
        const std::size_t begin = std::min(line.find_first_not_of("=:> \t'\"", separator), line.size());
        const std::size_t end = std::min(line.find_first_of("'\"<", begin), line.size());
        result.append(line.substr(0, begin));
        if (end > begin) result.append("***");
        line.remove_prefix(end);
    }
}

// The variables of a container may be passwords of any name.
std::string onlyContainerVariable(std::string_view variables) {
    while (!variables.empty()) {
        const std::string_view variable = takeField(variables, '\0');
        if (variable.starts_with("container=")) return std::string(variable) + '\0';
    }
    return {};
}

bool isGuestConfiguration(std::string_view path) {
    constexpr std::array<std::string_view, 4> kDirectories = {"/etc/libvirt/", "/run/libvirt/", "/etc/pve/",
                                                              "/var/lib/lxc/"};
    return std::ranges::any_of(kDirectories,
                               [path](std::string_view directory) { return path.starts_with(directory); });
}

}  // namespace

std::string withoutPasswords(std::string_view path, std::string content) {
    if (path == "/etc/shadow") return changeLines(content, withoutHash);
    if (path == "/proc/1/environ") return onlyContainerVariable(content);
    if (path == "/proc/cmdline") return changeLines(content, withoutSecrets);
    if (path == "/etc/cups/printers.conf") return changeLines(content, withoutUriPassword);
    if (isGuestConfiguration(path)) return changeLines(content, withoutPasswordValues);
    return content;
}

}  // namespace toolkit::quorvah
