#include "toolkit/machine/packages/DpkgStatus.h"

#include <array>
#include <iterator>
#include <span>

#include "kest/Ascii.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

struct StanzaField {
    std::string_view name;
    std::string_view DpkgStanza::*value;
};

// Those that begin with the same letter stand together.
constexpr StanzaField kFields[] = {
    {"Package", &DpkgStanza::package},         {"Status", &DpkgStanza::status},
    {"Section", &DpkgStanza::section},         {"Source", &DpkgStanza::source},
    {"Version", &DpkgStanza::version},         {"Architecture", &DpkgStanza::architecture},
    {"Maintainer", &DpkgStanza::maintainer},   {"Multi-Arch", &DpkgStanza::multiArch},
    {"Description", &DpkgStanza::description}, {"Installed-Size", &DpkgStanza::installedSize},
};

// The fields whose names begin with a letter, in either case. Most lines begin with another character: they continue a
// field, or give one that nobody asks for.
using Fields = std::span<const StanzaField>;
constexpr std::array<Fields, 256> kFieldsOfLetter = [] {
    std::array<Fields, 256> fields;
    for (std::size_t first = 0, end = 0; first < std::size(kFields); first = end) {
        const char letter = kFields[first].name.front();
        while (end < std::size(kFields) && kFields[end].name.front() == letter) ++end;
        const auto code = static_cast<unsigned char>(letter);
        fields[code] = fields[code ^ 0x20U] = Fields(kFields).subspan(first, end - first);
    }
    return fields;
}();

// Whether a line gives a field of this name, in any case.
bool gives(std::string_view line, std::string_view name) {
    return line.size() > name.size() && line[name.size()] == ':' &&
           (line.starts_with(name) || kest::equalsIgnoringCase(line.substr(0, name.size()), name));
}

void storeField(std::string_view line, DpkgStanza& stanza) {
    for (const StanzaField& field : kFieldsOfLetter[static_cast<unsigned char>(line.front())]) {
        if (!gives(line, field.name)) continue;
        std::string_view& value = stanza.*field.value;
        if (value.empty()) value = trimmed(line.substr(field.name.size() + 1));
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
        } else {
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
