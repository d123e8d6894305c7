#include "cli/scan/Xml.h"

#include <algorithm>
#include <array>
#include <limits>
#include <new>
#include <utility>

#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr std::size_t kMaxDepth = 100;

struct Reading {
    XML_Parser parser = nullptr;
    std::vector<XmlElement> open;  // from the root to the current element
    std::optional<XmlElement> root;
};

std::string trimmed(const std::string& text) {
    constexpr const char* kBlanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string::npos) return "";
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

void begin(void* data, const char* name, const char** attributes) {
    auto& reading = *static_cast<Reading*>(data);
    if (reading.open.size() == kMaxDepth) {
        XML_StopParser(reading.parser, XML_FALSE);
        return;
    }
    XmlElement& element = reading.open.emplace_back();
    element.name = name;
    for (; *attributes != nullptr; attributes += 2)
        element.attributes.push_back({attributes[0], attributes[1]});
}

void end(void* data, const char* /*name*/) {
    auto& reading = *static_cast<Reading*>(data);
    XmlElement element = std::move(reading.open.back());
    reading.open.pop_back();
    element.text = trimmed(element.text);
    if (reading.open.empty())
        reading.root = std::move(element);
    else
        reading.open.back().children.push_back(std::move(element));
}

void characters(void* data, const char* text, int length) {
    static_cast<Reading*>(data)->open.back().text.append(text, static_cast<std::size_t>(length));
}

bool isXmlCharacter(wchar_t character) {
    const auto code = static_cast<char32_t>(character);
    return (code >= 0x20 && code <= 0xd7ff) || (code >= 0xe000 && code <= 0xfffd) ||
           (code >= 0x10000 && code <= 0x10ffff);
}

// White space is escaped too, because a reader may normalize it.
constexpr std::array<std::pair<wchar_t, std::wstring_view>, 7> kEscapes{{{L'&', L"&amp;"},
                                                                         {L'<', L"&lt;"},
                                                                         {L'>', L"&gt;"},
                                                                         {L'"', L"&quot;"},
                                                                         {L'\t', L"&#9;"},
                                                                         {L'\n', L"&#10;"},
                                                                         {L'\r', L"&#13;"}}};

}  // namespace

XmlParser::XmlParser(const char* encoding, void* data, XML_StartElementHandler begin,
                     XML_EndElementHandler end)
    : parser_(XML_ParserCreate(encoding), XML_ParserFree) {
    if (parser_ == nullptr) throw std::bad_alloc();
    XML_SetUserData(get(), data);
    XML_SetElementHandler(get(), begin, end);
}

bool XmlParser::parse(std::string_view document) {
    if (document.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return false;
    return XML_Parse(get(), document.data(), static_cast<int>(document.size()), 1) == XML_STATUS_OK;
}

std::optional<XmlElement> readXmlElement(std::string_view xml) {
    Reading reading;
    XmlParser parser("UTF-8", &reading, begin, end);
    reading.parser = parser.get();
    XML_SetCharacterDataHandler(parser.get(), characters);
    if (!parser.parse(xml)) return std::nullopt;
    return reading.root;
}

std::string escapeXml(std::string_view text) {
    std::wstring escaped;
    for (const wchar_t character : fromUtf8(text)) {
        const auto* const escape = std::find_if(kEscapes.begin(), kEscapes.end(),
                                                [&](const auto& entry) { return entry.first == character; });
        if (escape != kEscapes.end())
            escaped += escape->second;
        else
            escaped += isXmlCharacter(character) ? character : L'\xfffd';
    }
    return toUtf8(escaped);
}

}  // namespace zavcli
