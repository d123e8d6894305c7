#include "hw/HWFaults.h"

#include <cstddef>
#include <iterator>

#include "intake/Children.h"
#include "kest/Shown.h"
#include "kest/Text.h"
#include "tessa/Utf8.h"

namespace zav {

namespace {

using tessa::Node;
using tessa::NodeList;
using tessa::Place;

// Adds the place of a node below another one; false when it is not there. What is before the first fault of an output
// is three levels deep at most.
bool addPlace(const Node* below, const Node* node, Place& place) {
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

// Where a place is, counted in instances.
std::string described(const Node* root, const Place& place) {
    const Node* const child =
        *std::next(childrenOf(root)->begin(), static_cast<std::ptrdiff_t>(place.front()));
    if (!isElement(child)) return " behind instance " + std::to_string(place.front());
    return " in instance " + std::to_string(place.front() + 1) + ", " + quotedText(child->text());
}

}  // namespace

HWFaults::HWFaults(ZAVHwCtx* context, const XMLParser& output, const std::wstring& path)
    : context_(context), output_(output), path_(path) {
    context_->faults = this;
}

void HWFaults::tell(const std::string& what, const Node* node) const {
    Place place;
    if (!context_->logger().isHeard() || !addPlace(output_.getRootNode(), node, place)) return;
    const int line = output_.lineOf(place);
    std::string message = "[" + kest::shown(kest::narrow(path_)) + "]";
    if (line > 0) message += ", line " + std::to_string(line);
    message += ": " + what + described(output_.getRootNode(), place);
    context_->logger().tell("ZAV_hw_run", message);
}

std::string quotedText(const wchar_t* text) {
    std::string bytes;
    for (; *text != L'\0' && bytes.size() <= kest::kLongestQuoted; ++text) {
        char utf8[4];
        bytes.append(utf8, tessa::narrowUtf8(*text, utf8));
    }
    return kest::quoted(bytes);
}

}  // namespace zav
