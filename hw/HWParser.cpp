#include "hw/HWParser.h"

#include "hw/HWDiagnostics.h"
#include "intake/NodeChildren.h"

namespace zav {

namespace {

using tessa::Node;
using tessa::NodeList;

constexpr const char* kFunction = "ZAV_hw_run";

int refuse(const ZAVHwCtx* context, const std::string& description, const Node* node) {
    if (context->diagnostics != nullptr) context->diagnostics->report(description, node);
    return ZAV_ERROR_HW_OUTPUT;
}

int refuseText(const ZAVHwCtx* context, const std::string& expected, const Node* text) {
    return refuse(context, expected + " is expected, not the text " + quotedText(text->text()), text);
}

// The value of a field with at most one text node, which can be used without a copy. Null for any other field.
const char* singleText(const Node* field) {
    const NodeList* const children = childrenOf(field);
    if (children == nullptr) return "";
    const Node* const only = children->front();
    return only->nextSibling() == nullptr ? only->utf8() : nullptr;
}

int parseField(ZAVHwCtx* context, HWInstance* instance, const Node* field) {
    const char* value = singleText(field);
    if (value == nullptr) {
        std::string joined;
        const int code = HW_parseHWField(context, field, joined);
        if (code != ZAV_SUCCESS) return code;
        value = context->tables.texts().add(joined);
    }
    instance->fields.push_back({field->text(), value});
    return ZAV_SUCCESS;
}

// Looks up the group of an element and caches the last result. Instances of a group are usually adjacent, and equal
// names of a document have one address.
class GroupCache {
  public:
    int idOf(const Node* element) {
        if (element->text() != name_) {
            name_ = element->text();
            id_ = HW_getGroupId(name_);
        }
        return id_;
    }

  private:
    const wchar_t* name_ = nullptr;
    int id_ = 0;
};

// `instance` is room for the fields.
int parseInstance(ZAVHwCtx* context, const Node* element, GroupCache& groups, HWInstance& instance) {
    if (!isElement(element)) return refuseText(context, "an instance of a group", element);
    const int id = groups.idOf(element);
    if (id < kFirstGroup) {
        const int code = refuse(context, "no group has the name " + quotedText(element->text()), element);
        context->logger().traceMIN(kFunction, "Error: No such group [%S]", element->text());
        return code;
    }
    instance.fields.clear();
    const int code = HW_parseHWGroup(context, &instance, element);
    if (code != ZAV_SUCCESS) return code;
    context->tables.add(id, instance);
    return ZAV_SUCCESS;
}

}  // namespace

int HW_parseHWData(ZAVHwCtx* context, const Node* root) {
    const NodeList* children = nullptr;
    if (root == nullptr || root->getChildren(&children) != 0 || children == nullptr) {
        context->logger().traceMIN(kFunction, "Error during a parse, no root data");
        return ZAV_ERROR_HW_OUTPUT;
    }
    context->tables.setTexts(root->shareTexts());
    GroupCache groups;
    HWInstance instance;
    int instances = 0;
    for (const Node* const child : *children) {
        const int code = parseInstance(context, child, groups, instance);
        if (code != ZAV_SUCCESS) return code;
        ++instances;
    }
    HW_reportInstances(context, instances);
    return ZAV_SUCCESS;
}

void HW_reportInstances(ZAVHwCtx* context, int instances) {
    // Hosts match this message byte for byte, although it counts instances, not groups.
    context->logger().traceMAX(kFunction, "Parse finish. %d groups successfully retrieved", instances);
}

int HW_parseHWGroup(ZAVHwCtx* context, HWInstance* instance, const Node* element) {
    const NodeList* const children = childrenOf(element);
    if (children == nullptr) return ZAV_SUCCESS;
    for (const Node* const child : *children) {
        const int code =
            isElement(child) ? parseField(context, instance, child) : refuseText(context, "a field", child);
        if (code != ZAV_SUCCESS) return code;
    }
    return ZAV_SUCCESS;
}

int HW_parseHWField(ZAVHwCtx* context, const Node* field, std::string& value) {
    const NodeList* const children = childrenOf(field);
    if (children == nullptr) return ZAV_SUCCESS;
    for (const Node* const child : *children) {
        if (child->type() != Node::kText) {
            const int code = refuse(context,
                                    "text is expected in the field " + quotedText(field->text()) +
                                        ", not the element " + quotedText(child->text()),
                                    child);
            context->logger().traceMIN("parseHWField()", "Error: unrecognized format of value in field [%S]",
                                       field->text());
            return code;
        }
        value += child->utf8();
    }
    return ZAV_SUCCESS;
}

}  // namespace zav
