#include "toolkit/quorvis/evaluation/FoundFiles.h"

#include <algorithm>

namespace toolkit::quorvis {

namespace {

bool readsOneFile(LeafKind kind) {
    switch (kind) {
        case LeafKind::File:
        case LeafKind::Content:
        case LeafKind::Bytes:
        case LeafKind::Property:
        case LeafKind::Xml:
        case LeafKind::Elf:
        case LeafKind::FileVersion:
        case LeafKind::Component:
            return true;
        default:
            return false;
    }
}

// Another path is the same for all items of Each.
bool hasVariablePath(const Leaf& leaf) {
    return std::ranges::any_of(leaf.attributes, [](const LeafAttribute& attribute) {
        return attribute.attribute == Attribute::Path && !attribute.value.constant();
    });
}

bool canBeCausedByFile(EventCode code) {
    switch (code) {
        case EventCode::Aborted:
        case EventCode::Config:
        case EventCode::Sandbox:
        case EventCode::UndefinedVariable:
        case EventCode::Unsupported:
            return false;
        default:
            return true;
    }
}

}  // namespace

bool FoundFiles::areCauseOf(const Leaf& leaf, EventCode code) const {
    if (detection_.each.empty()) return false;
    if (&leaf == &signature_.leaves[detection_.each.front()])
        return leaf.kind == LeafKind::SwidTag && code == EventCode::Parse;
    return readsOneFile(leaf.kind) && hasVariablePath(leaf) && canBeCausedByFile(code);
}

bool FoundFiles::areCauseOf(const Leaf& leaf, const LeafResult& result) const {
    return !result.events.empty() && std::ranges::all_of(result.events, [&](const Event& event) {
        return areCauseOf(leaf, event.code);
    });
}

}  // namespace toolkit::quorvis
