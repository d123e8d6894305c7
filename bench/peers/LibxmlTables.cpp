#include "bench/peers/LibxmlTables.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstring>
#include <memory>

#include "tessa/TextStore.h"

namespace zavbench {

namespace {

void copyInstance(const xmlNode* element, ZAVHwCtx& context, tessa::TextStore& texts) {
    zav::HWInstance instance;
    for (const xmlNode* field = element->children; field != nullptr; field = field->next) {
        if (field->type != XML_ELEMENT_NODE) continue;
        const wchar_t* const name = texts.intern(reinterpret_cast<const char*>(field->name))->text.text();
        for (const xmlNode* text = field->children; text != nullptr; text = text->next) {
            const char* const content = reinterpret_cast<const char*>(text->content);
            texts.append(content, std::strlen(content));
        }
        instance.fields.push_back({name, texts.isOpen() ? texts.finish() : ""});
    }
    const wchar_t* const group = texts.intern(reinterpret_cast<const char*>(element->name))->text.text();
    context.tables.add(zav::HW_getGroupId(group), instance);
}

}  // namespace

bool fillTablesWithLibxml(const std::string& path, ZAVHwCtx& context) {
    xmlDoc* const document = xmlReadFile(path.c_str(), nullptr, XML_PARSE_HUGE);
    if (document == nullptr) return false;
    const auto texts = std::make_shared<tessa::TextStore>();
    context.tables.setTexts(texts);
    const xmlNode* const root = xmlDocGetRootElement(document);
    for (const xmlNode* child = root->children; child != nullptr; child = child->next) {
        if (child->type == XML_ELEMENT_NODE) copyInstance(child, context, *texts);
    }
    xmlFreeDoc(document);
    return true;
}

}  // namespace zavbench
