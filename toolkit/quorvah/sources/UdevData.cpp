#include "toolkit/quorvah/sources/UdevData.h"

#include <charconv>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

std::string_view udevProperty(std::string_view text, std::string_view name) {
    std::string_view line;
    while (nextLine(text, line)) {
        if (takeField(line, ':') == "E" && takeField(line, '=') == name) return line;
    }
    return {};
}

std::string withoutHexEscapes(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        unsigned char byte = 0;
        const bool escape =
            text.size() >= 4 && text.substr(0, 2) == "\\x" &&
            std::from_chars(text.data() + 2, text.data() + 4, byte, 16).ptr == text.data() + 4;
        plain += escape ? static_cast<char>(byte) : text.front();
        text.remove_prefix(escape ? 4 : 1);
    }
    return plain;
}

}  // namespace toolkit::quorvah
