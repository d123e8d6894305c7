#include "cli/XmlWriter.h"

#include <fmt/format.h>

#include <iterator>

#include "cli/Text.h"

namespace zavcli {

namespace {

bool isXmlCharacter(wchar_t character) {
    const auto code = static_cast<char32_t>(character);
    return (code >= 0x20 && code <= 0xd7ff) || (code >= 0xe000 && code <= 0xfffd) ||
           (code >= 0x10000 && code <= 0x10ffff);
}

std::string escaped(std::string_view value) {
    std::wstring text;
    for (const wchar_t character : fromUtf8(value)) {
        switch (character) {
            case L'&':
                text += L"&amp;";
                break;
            case L'<':
                text += L"&lt;";
                break;
            case L'>':
                text += L"&gt;";
                break;
            // As references, since a reader may turn the characters themselves into line feeds or drop them.
            case L'\t':
                text += L"&#9;";
                break;
            case L'\n':
                text += L"&#10;";
                break;
            case L'\r':
                text += L"&#13;";
                break;
            default:
                text += isXmlCharacter(character) ? character : L'\xfffd';
        }
    }
    return toUtf8(text);
}

std::string element(const Field& field) {
    if (field.value.empty()) return fmt::format("    <{}/>\n", field.name);
    return fmt::format("    <{0}>{1}</{0}>\n", field.name, escaped(field.value));
}

}  // namespace

std::string xmlText(const Inventory& inventory) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Inventory>\n";
    for (const Group& group : inventory.groups) {
        for (const Instance& instance : group.instances) {
            if (instance.empty()) {
                fmt::format_to(std::back_inserter(text), "  <{}/>\n", group.name);
                continue;
            }
            fmt::format_to(std::back_inserter(text), "  <{}>\n", group.name);
            for (const Field& field : instance) text += element(field);
            fmt::format_to(std::back_inserter(text), "  </{}>\n", group.name);
        }
    }
    return text + "</Inventory>\n";
}

}  // namespace zavcli
