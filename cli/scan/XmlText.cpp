#include "cli/scan/XmlText.h"

#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

bool isXmlCharacter(wchar_t character) {
    const auto code = static_cast<char32_t>(character);
    return (code >= 0x20 && code <= 0xd7ff) || (code >= 0xe000 && code <= 0xfffd) ||
           (code >= 0x10000 && code <= 0x10ffff);
}

}  // namespace

std::string escapedXml(std::string_view text) {
    std::wstring escaped;
    for (const wchar_t character : fromUtf8(text)) {
        switch (character) {
            case L'&':
                escaped += L"&amp;";
                break;
            case L'<':
                escaped += L"&lt;";
                break;
            case L'>':
                escaped += L"&gt;";
                break;
            case L'"':
                escaped += L"&quot;";
                break;
            // As references, since a reader may turn the characters themselves into line feeds or drop them.
            case L'\t':
                escaped += L"&#9;";
                break;
            case L'\n':
                escaped += L"&#10;";
                break;
            case L'\r':
                escaped += L"&#13;";
                break;
            default:
                escaped += isXmlCharacter(character) ? character : L'\xfffd';
        }
    }
    return toUtf8(escaped);
}

}  // namespace zavcli
