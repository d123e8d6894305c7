#include "tests/cli/XmlReader.h"

#include <expat.h>

#include <memory>

namespace zavtest {

namespace {

struct Reading {
    int depth = 0;
    bool shaped = true;
    std::vector<XmlInstance> instances;
};

void begin(void* data, const char* name, const char** /*attributes*/) {
    auto& reading = *static_cast<Reading*>(data);
    ++reading.depth;
    if (reading.depth == 2) reading.instances.push_back({name, {}});
    if (reading.depth == 3) reading.instances.back().fields.push_back({name, ""});
    if (reading.depth > 3) reading.shaped = false;
}

void end(void* data, const char* /*name*/) {
    --static_cast<Reading*>(data)->depth;
}

void characters(void* data, const char* text, int length) {
    auto& reading = *static_cast<Reading*>(data);
    const std::string piece(text, static_cast<std::size_t>(length));
    if (reading.depth == 3)
        reading.instances.back().fields.back().value += piece;
    else if (piece.find_first_not_of(" \n") != std::string::npos)
        reading.shaped = false;
}

}  // namespace

std::optional<std::vector<XmlInstance>> readXml(const std::string& text) {
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(XML_ParserCreate(nullptr),
                                                                              XML_ParserFree);
    Reading reading;
    XML_SetUserData(parser.get(), &reading);
    XML_SetElementHandler(parser.get(), begin, end);
    XML_SetCharacterDataHandler(parser.get(), characters);
    const bool read = XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1) == XML_STATUS_OK;
    if (!read || !reading.shaped) return std::nullopt;
    return reading.instances;
}

}  // namespace zavtest
