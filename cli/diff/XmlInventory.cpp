// Reads an XML document: an element per instance below the root, and an element per field in it.
#include <fmt/format.h>

#include <optional>
#include <utility>

#include "cli/diff/BadInventory.h"
#include "cli/diff/InventoryBuilder.h"
#include "cli/scan/Xml.h"

namespace zavcli {

namespace {

struct Reading {
    XML_Parser parser = nullptr;
    InventoryBuilder builder = {};
    int depth = 0;
    std::string value = {};  // of the current field
    std::optional<BadInventory> problem = {};
};

void refuse(Reading& reading, const std::string& reason) {
    if (!reading.problem) reading.problem.emplace(XML_GetCurrentLineNumber(reading.parser), reason);
    XML_StopParser(reading.parser, XML_FALSE);
}

void begin(void* data, const char* name, const char** /*attributes*/) {
    auto& reading = *static_cast<Reading*>(data);
    const std::string_view element = name;
    switch (++reading.depth) {
        case 1:
            // A scanner of another toolkit writes <Inventory> too.
            if (element != "Inventory" && element != "Hardware")
                refuse(reading, fmt::format("this is no hardware inventory: the root element is <{}>", name));
            break;
        case 2:
            reading.builder.beginGroup(element);
            reading.builder.beginInstance();
            break;
        case 3:
            reading.value.clear();
            break;
        default:
            refuse(reading, fmt::format("the element <{}> is within a field", name));
    }
}

void end(void* data, const char* name) {
    auto& reading = *static_cast<Reading*>(data);
    if (reading.depth-- == 3) reading.builder.addField(name, std::move(reading.value));
}

void characters(void* data, const char* text, int length) {
    auto& reading = *static_cast<Reading*>(data);
    const std::string_view piece(text, static_cast<std::size_t>(length));
    if (reading.depth == 3)
        reading.value += piece;
    else if (piece.find_first_not_of(" \t\r\n") != std::string_view::npos)
        refuse(reading, "there is text beside the elements");
}

}  // namespace

SavedInventory parseXmlInventory(std::string_view content) {
    Reading reading;
    XmlParser parser(nullptr, &reading, begin, end);
    reading.parser = parser.get();
    XML_SetCharacterDataHandler(parser.get(), characters);
    if (!parser.parse(content)) {
        if (reading.problem) throw *reading.problem;
        throw BadInventory(
            XML_GetCurrentLineNumber(parser.get()),
            fmt::format("the XML is not well-formed: {}", XML_ErrorString(XML_GetErrorCode(parser.get()))));
    }
    return reading.builder.finish();
}

}  // namespace zavcli
