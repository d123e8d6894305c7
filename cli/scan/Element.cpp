#include "cli/scan/Element.h"

#include <expat.h>

#include <algorithm>
#include <limits>
#include <memory>

namespace zavcli {

namespace {

constexpr std::size_t kDeepest = 100;

struct Reading {
    XML_Parser parser = nullptr;
    std::vector<Element> open;  // from the root to the element at hand
    std::optional<Element> root;
};

std::string trimmed(const std::string& text) {
    constexpr const char* kBlanks = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string::npos) return "";
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

void begin(void* data, const char* name, const char** attributes) {
    auto& reading = *static_cast<Reading*>(data);
    if (reading.open.size() == kDeepest) {
        XML_StopParser(reading.parser, XML_FALSE);
        return;
    }
    Element& element = reading.open.emplace_back();
    element.name = name;
    for (; *attributes != nullptr; attributes += 2)
        element.attributes.push_back({attributes[0], attributes[1]});
}

void end(void* data, const char* /*name*/) {
    auto& reading = *static_cast<Reading*>(data);
    Element element = std::move(reading.open.back());
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

}  // namespace

std::string Element::attribute(std::string_view wanted) const {
    const auto found = std::find_if(attributes.begin(), attributes.end(),
                                    [&](const Field& field) { return field.name == wanted; });
    return found == attributes.end() ? "" : found->value;
}

std::optional<Element> readElement(std::string_view xml) {
    if (xml.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return std::nullopt;
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate("UTF-8"),
                                                                              XML_ParserFree);
    if (parser == nullptr) return std::nullopt;
    Reading reading;
    reading.parser = parser.get();
    XML_SetUserData(parser.get(), &reading);
    XML_SetElementHandler(parser.get(), begin, end);
    XML_SetCharacterDataHandler(parser.get(), characters);
    if (XML_Parse(parser.get(), xml.data(), static_cast<int>(xml.size()), 1) != XML_STATUS_OK)
        return std::nullopt;
    return reading.root;
}

}  // namespace zavcli
