#include "bench/peers/DirectTables.h"

#include <expat.h>

#include <memory>

#include "bench/peers/ExpatTokens.h"
#include "tessa/TextStore.h"

namespace zavbench {

namespace {

struct Filling {
    ZAVHwCtx& context;
    tessa::TextStore& texts;
    int depth = 0;
    const wchar_t* group = nullptr;
    const wchar_t* field = nullptr;
    zav::HWInstance instance{};
};

void storeInstance(Filling& filling) {
    filling.context.tables.add(zav::HW_getGroupId(filling.group), filling.instance);
    filling.instance.fields.clear();
}

void XMLCALL onStart(void* data, const XML_Char* name, const XML_Char** /*attributes*/) {
    auto& filling = *static_cast<Filling*>(data);
    ++filling.depth;
    if (filling.depth == 2) filling.group = filling.texts.intern(name)->text.text();
    if (filling.depth == 3) filling.field = filling.texts.intern(name)->text.text();
}

void XMLCALL onEnd(void* data, const XML_Char* /*name*/) {
    auto& filling = *static_cast<Filling*>(data);
    if (filling.depth == 3) {
        filling.instance.fields.push_back(
            {filling.field, filling.texts.isOpen() ? filling.texts.finish() : ""});
    }
    if (filling.depth == 2) storeInstance(filling);
    --filling.depth;
}

void XMLCALL onText(void* data, const XML_Char* text, int length) {
    static_cast<Filling*>(data)->texts.append(text, static_cast<std::size_t>(length));
}

}  // namespace

bool fillTablesDirectly(const std::string& path, ZAVHwCtx& context) {
    const auto texts = std::make_shared<tessa::TextStore>();
    context.tables.setTexts(texts);
    Filling filling{context, *texts};
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetUserData(parser, &filling);
    XML_SetElementHandler(parser, onStart, onEnd);
    XML_SetCharacterDataHandler(parser, onText);
    const bool good = parseFile(parser, path);
    XML_ParserFree(parser);
    return good;
}

}  // namespace zavbench
