#include "bench/peers/PugixmlTables.h"

#include <pugixml.hpp>

namespace zavbench {

namespace {

void copyInstance(const pugi::xml_node& element, ZAVHwCtx& context, zav::HWInstance& instance) {
    tessa::TextStore& texts = context.tables.texts();
    instance.fields.clear();
    for (const pugi::xml_node& field : element.children()) {
        const wchar_t* const name = texts.intern(field.name())->text.text();
        instance.fields.push_back({name, texts.add(field.child_value())});
    }
    const wchar_t* const group = texts.intern(element.name())->text.text();
    context.tables.add(zav::HW_getGroupId(group), instance);
}

}  // namespace

bool fillTablesWithPugixml(const std::string& path, ZAVHwCtx& context) {
    pugi::xml_document document;
    if (!document.load_file(path.c_str())) return false;
    zav::HWInstance instance;
    for (const pugi::xml_node& child : document.document_element().children())
        copyInstance(child, context, instance);
    return true;
}

}  // namespace zavbench
