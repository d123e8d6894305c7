#include "toolkit/machine/DpkgStatus.h"

#include <array>

#include "toolkit/machine/Lines.h"
#include "toolkit/machine/SameText.h"

namespace toolkit {
namespace {

struct StanzaField {
    std::string_view name;
    std::string_view DpkgStanza::*value;
};

constexpr StanzaField kFields[] = {
    {"Package", &DpkgStanza::package},         {"Status", &DpkgStanza::status},
    {"Version", &DpkgStanza::version},         {"Architecture", &DpkgStanza::architecture},
    {"Multi-Arch", &DpkgStanza::multiArch},    {"Maintainer", &DpkgStanza::maintainer},
    {"Description", &DpkgStanza::description}, {"Source", &DpkgStanza::source},
    {"Section", &DpkgStanza::section},         {"Installed-Size", &DpkgStanza::installedSize},
};

// The letters that those names begin with, in either case.
constexpr std::array<bool, 256> kInitials = [] {
    std::array<bool, 256> initials{};
    for (const StanzaField& field : kFields) {
        const auto letter = static_cast<unsigned char>(field.name.front());
        initials[letter] = initials[letter ^ 0x20U] = true;
    }
    return initials;
}();

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

// Field names are the same in any case. Most differ in length or in the first letter already.
bool sameName(std::string_view a, std::string_view b) {
    return a.size() == b.size() && ((a.front() ^ b.front()) & ~0x20) == 0 && sameButForCase(a, b);
}

void storeField(std::string_view line, DpkgStanza& stanza) {
    if (!kInitials[static_cast<unsigned char>(line.front())]) return;
    const std::size_t colon = line.find(':');
    if (colon == 0 || colon == std::string_view::npos) return;
    const std::string_view name = line.substr(0, colon);
    for (const StanzaField& field : kFields) {
        if (!sameName(name, field.name)) continue;
        std::string_view& value = stanza.*field.value;
        if (value.empty()) value = trimmed(line.substr(colon + 1));
        return;
    }
}

}  // namespace

bool DpkgStatus::next(DpkgStanza& stanza) {
    stanza = {};
    std::string_view line;
    while (nextLine(rest_, line)) {
        if (line.empty()) {
            if (!stanza.package.empty()) break;
            stanza = {};
        } else if (!isBlank(line.front())) {
            storeField(line, stanza);
        }
    }
    stanza.source = trimmed(stanza.source.substr(0, stanza.source.find('(')));
    if (!stanza.package.empty()) return true;
    stanza = {};
    return false;
}

bool isInstalled(std::string_view status) {
    const std::size_t blank = status.rfind(' ');
    if (blank == std::string_view::npos) return false;
    const std::string_view state = status.substr(blank + 1);
    return state == "installed" || state == "triggers-awaited" || state == "triggers-pending";
}

DpkgVersion splitDpkgVersion(std::string_view version) {
    DpkgVersion parts;
    const std::size_t colon = version.find(':');
    if (colon != std::string_view::npos) {
        parts.epoch = version.substr(0, colon);
        version.remove_prefix(colon + 1);
    }
    const std::size_t dash = version.rfind('-');
    if (dash != std::string_view::npos) parts.revision = version.substr(dash + 1);
    parts.upstream = version.substr(0, dash);
    return parts;
}

}  // namespace toolkit
