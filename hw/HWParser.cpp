#include "hw/HWParser.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "core/Block.h"
#include "intake/Children.h"
#include "kest/Shown.h"
#include "tessa/Utf8.h"

namespace zav {

namespace {

using tessa::Node;
using tessa::NodeList;

constexpr const char* kFunction = "ZAV_hw_run";

// A name or text in messages.
std::string quoted(const wchar_t* text) {
    std::string bytes;
    for (; *text != L'\0' && bytes.size() <= kest::kLongestQuoted; ++text) {
        char utf8[4];
        bytes.append(utf8, tessa::narrowUtf8(*text, utf8));
    }
    return kest::quoted(bytes);
}

// What is told of a fault, beside the messages that hosts know.
int refuse(ZAVHwCtx* context, const char* what, const Node* node) {
    context->trouble = what + quoted(node->text());
    return ZAV_ERROR_HW_OUTPUT;
}

// The message that hosts know says this already, unless the locale drops it for the sake of the name.
int refuseNamed(ZAVHwCtx* context, const char* what, const Node* node) {
    const std::wstring_view name = node->text();
    const bool carried = std::all_of(name.begin(), name.end(), [](wchar_t each) { return each < 0x80; });
    return carried ? ZAV_ERROR_HW_OUTPUT : refuse(context, what, node);
}

// Where a child of the root stands, counted in instances.
std::string placeOf(const Node* child, int before) {
    if (!isElement(child)) return " behind instance " + std::to_string(before);
    return " in instance " + std::to_string(before + 1) + ", " + quoted(child->text());
}

// The value of a field that is one piece of text, which nearly all are: it is taken as it stands in the
// document. Null for any other field.
const wchar_t* soleText(const Node* field) {
    const NodeList* const children = childrenOf(field);
    if (children == nullptr) return L"";
    const Node* const only = children->front();
    return only->type() == Node::kText && only->nextSibling() == nullptr ? only->text() : nullptr;
}

int parseField(ZAVHwCtx* context, HWInstance* instance, const Node* field) {
    const wchar_t* value = soleText(field);
    if (value == nullptr) {
        std::wstring joined;
        const int code = HW_parseHWField(context, field, joined);
        if (code != ZAV_SUCCESS) return code;
        value = context->texts.joined.emplace_back(std::move(joined)).c_str();
    }
    instance->push_back({field->text(), value});
    return ZAV_SUCCESS;
}

// The array that the host is handed; null for an instance without fields.
Block<const wchar_t*> fieldNamesOf(const HWInstance& instance) {
    Block<const wchar_t*> names = newBlock<const wchar_t*>(instance.size());
    const wchar_t** name = names.get();
    for (const HWField& field : instance) *name++ = field.name;
    return names;
}

void store(ZAVHwCtx* context, int id, HWInstance&& instance) {
    auto names = fieldNamesOf(instance);
    // The array first: one without its instance is never seen, should memory run out between the two.
    context->fieldNames[id].push_back(names.get());
    static_cast<void>(names.release());
    context->groups[id].push_back(std::move(instance));
}

// The group of an element. Instances of a group mostly stand together, and the document holds each name once,
// so the answer for the element before is nearly always the answer.
class GroupFinder {
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

int parseInstance(ZAVHwCtx* context, const Node* element, GroupFinder& groups) {
    if (!isElement(element))
        return refuse(context, "an instance of a group is expected, not the text ", element);
    const int id = groups.idOf(element);
    if (id < kFirstGroup) {
        if (context->log != nullptr) {
            context->log->traceMIN(kFunction, "Error: No such group [%S]", element->text());
        }
        return refuseNamed(context, "no group has the name ", element);
    }
    HWInstance instance;
    const int code = HW_parseHWGroup(context, &instance, element);
    if (code == ZAV_SUCCESS) store(context, id, std::move(instance));
    return code;
}

}  // namespace

int HW_parseHWData(ZAVHwCtx* context, const Node* root) {
    const NodeList* children = nullptr;
    if (root == nullptr || root->getChildren(&children) != 0 || children == nullptr) {
        if (context->log != nullptr) {
            context->log->traceMIN(kFunction, "Error during a parse, no root data");
        }
        return ZAV_ERROR_HW_OUTPUT;
    }
    context->texts.document = root->shareTexts();
    GroupFinder groups;
    int instances = 0;
    for (const Node* const child : *children) {
        const int code = parseInstance(context, child, groups);
        if (code != ZAV_SUCCESS) {
            if (!context->trouble.empty()) context->trouble += placeOf(child, instances);
            return code;
        }
        ++instances;
    }
    if (context->log != nullptr) {
        context->log->traceMAX(kFunction, "Parse finish. %d groups successfully retrieved", instances);
    }
    return ZAV_SUCCESS;
}

int HW_parseHWGroup(ZAVHwCtx* context, HWInstance* instance, const Node* element) {
    const NodeList* const children = childrenOf(element);
    if (children == nullptr) return ZAV_SUCCESS;
    instance->reserve(static_cast<std::size_t>(std::distance(children->begin(), children->end())));
    for (const Node* const child : *children) {
        const int code = isElement(child) ? parseField(context, instance, child)
                                          : refuse(context, "a field is expected, not the text ", child);
        if (code != ZAV_SUCCESS) return code;
    }
    return ZAV_SUCCESS;
}

int HW_parseHWField(ZAVHwCtx* context, const Node* field, std::wstring& value) {
    const NodeList* const children = childrenOf(field);
    if (children == nullptr) return ZAV_SUCCESS;
    for (const Node* const child : *children) {
        if (child->type() != Node::kText) {
            if (context->log != nullptr) {
                context->log->traceMIN("parseHWField()", "Error: unrecognized format of value in field [%S]",
                                       field->text());
            }
            return refuseNamed(context, "no text is the value of the field ", field);
        }
        value += child->text();
    }
    return ZAV_SUCCESS;
}

}  // namespace zav
