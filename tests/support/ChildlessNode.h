#pragma once

#include <memory>

#include "tessa/Node.h"

namespace zavtest {

// An element without a list of children. Asking for them returns `result`.
class ChildlessNode : public tessa::Node {
  public:
    ChildlessNode(const wchar_t* name, int result) : name_(name), result_(result) {}

    int type() const override { return kElement; }
    const wchar_t* text() const override { return name_.text(); }
    const char* utf8() const override { return nullptr; }
    const kest::String& name() const override { return name_; }
    int getChildren(const tessa::NodeList** children) const override {
        *children = nullptr;
        return result_;
    }
    const tessa::StringMap* attributes() const override { return &attributes_; }
    std::shared_ptr<tessa::TextStore> shareTexts() const override { return nullptr; }

  private:
    kest::String name_;
    int result_;
    tessa::StringMap attributes_;
};

}  // namespace zavtest
