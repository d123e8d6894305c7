#include "tessa/TreeNodes.h"

namespace tessa {

const StringMap kNoAttributes;

namespace {

const kest::String kNoName;

}  // namespace

int ElementNode::getChildren(const NodeList** children) const {
    *children = &children_;
    return 0;
}

const kest::String& TextNode::name() const {
    return kNoName;
}

int TextNode::getChildren(const NodeList** /*children*/) const {
    return -1;
}

const StringMap* TextNode::attributes() const {
    return &kNoAttributes;
}

}  // namespace tessa
