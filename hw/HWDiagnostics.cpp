#include "hw/HWDiagnostics.h"

#include <cstddef>
#include <iterator>

#include "intake/NodeChildren.h"
#include "kest/Escape.h"
#include "kest/Text.h"
#include "tessa/Utf8.h"

namespace zav {

namespace {

using tessa::Node;
using tessa::NodeList;
using tessa::NodePath;

// Appends the path from `below` to a descendant; false if `node` is not one. The recursion is at most three levels deep:
// the search ends at the first fault, and any deeper node would be one.
bool addPlace(const Node* below, const Node* node, NodePath& place) {
    const NodeList* const children = childrenOf(below);
    if (children == nullptr) return false;
    place.push_back(0);
    for (const Node* const child : *children) {
        if (child == node || addPlace(child, node, place)) return true;
        ++place.back();
    }
    place.pop_back();
    return false;
}

// Names the instance that contains a node, or the last instance before it.
std::string location(const Node* root, const NodePath& place) {
    const Node* const child =
        *std::next(childrenOf(root)->begin(), static_cast<std::ptrdiff_t>(place.front()));
    if (!isElement(child)) return " behind instance " + std::to_string(place.front());
    return " in instance " + std::to_string(place.front() + 1) + ", " + quotedText(child->text());
}

}  // namespace

HWDiagnostics::HWDiagnostics(ZAVHwCtx* context, const XMLParser& output, const std::wstring& path)
    : context_(context), output_(output), path_(path) {
    context_->diagnostics = this;
}

void HWDiagnostics::report(const std::string& description, const Node* node) const {
    NodePath place;
    if (!context_->logger().hasCallback() || !addPlace(output_.getRootNode(), node, place)) return;
    const int line = output_.lineOf(place);
    std::string message = "[" + kest::escaped(kest::narrow(path_)) + "]";
    if (line > 0) message += ", line " + std::to_string(line);
    message += ": " + description + location(output_.getRootNode(), place);
    context_->logger().reportFailure("ZAV_hw_run", message);
}

std::string quotedText(const wchar_t* text) {
    std::string bytes;
    for (; *text != L'\0' && bytes.size() <= kest::kMaxQuotedBytes; ++text) {
        char utf8[4];
        bytes.append(utf8, tessa::narrowUtf8(*text, utf8));
    }
    return kest::quoted(bytes);
}

}  // namespace zav
