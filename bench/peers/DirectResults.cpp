#include "bench/peers/DirectResults.h"

#include <expat.h>

#include <cstring>
#include <memory>

#include "bench/peers/ExpatTokens.h"
#include "bench/peers/Results.h"
#include "kest/Text.h"
#include "tessa/TextStore.h"

namespace zavbench {

namespace {

struct Filling {
    ZAVSwCtx& context;
    tessa::TextStore& texts;
    int depth = 0;
    std::unique_ptr<ZAVSwResult> result;
    std::vector<zav::SWVariable> variables;
    std::string metadata;  // the XML text of the current result
};

const char* valueOf(Filling& filling, const XML_Char** attributes, const char* name) {
    for (; *attributes != nullptr; attributes += 2) {
        if (std::strcmp(attributes[0], name) == 0) return filling.texts.add(attributes[1]);
    }
    return "";
}

bool inMetadata(const Filling& filling) {
    return !filling.metadata.empty();
}

void XMLCALL onStart(void* data, const XML_Char* name, const XML_Char** attributes) {
    auto& filling = *static_cast<Filling*>(data);
    ++filling.depth;
    if (filling.depth == 2) {
        filling.result = std::make_unique<ZAVSwResult>();
        filling.result->guid = valueOf(filling, attributes, "guid");
        filling.result->name = valueOf(filling, attributes, "name");
    } else if (inMetadata(filling) || (filling.depth == 3 && std::strcmp(name, "Metadata") == 0)) {
        filling.metadata.append("<").append(name).append(">");
    } else if (filling.depth == 3) {
        filling.variables.push_back({tessa::TextStore::wide(valueOf(filling, attributes, "name")),
                                     valueOf(filling, attributes, "value")});
    }
}

void XMLCALL onEnd(void* data, const XML_Char* name) {
    auto& filling = *static_cast<Filling*>(data);
    if (inMetadata(filling)) filling.metadata.append("</").append(name).append(">");
    if (filling.depth == 3 && inMetadata(filling)) {
        filling.result->metadata =
            filling.context.texts.metadata.emplace_back(kest::widen(filling.metadata)).c_str();
        filling.metadata.clear();
    }
    if (filling.depth == 2) {
        filling.result->setVariables(filling.variables);
        addResult(filling.context, std::move(filling.result));
        filling.variables.clear();
    }
    --filling.depth;
}

void XMLCALL onText(void* data, const XML_Char* text, int length) {
    auto& filling = *static_cast<Filling*>(data);
    if (inMetadata(filling)) filling.metadata.append(text, static_cast<std::size_t>(length));
}

}  // namespace

bool fillResultsDirectly(const std::string& path, ZAVSwCtx& context) {
    const auto texts = std::make_shared<tessa::TextStore>();
    context.texts.documents.push_back(texts);
    Filling filling{context, *texts, 0, nullptr, {}, {}};
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &filling);
    XML_SetElementHandler(parser, onStart, onEnd);
    XML_SetCharacterDataHandler(parser, onText);
    const bool good = parseFile(parser, path);
    XML_ParserFree(parser);
    finishResults(context);
    return good;
}

}  // namespace zavbench
