#pragma once

#include "kest/String.h"

namespace tessa {

// An attribute. Both texts live as long as the texts of the document.
struct Attribute {
    const kest::String* name;
    const char* value;  // UTF-8, NUL-terminated
};

// The attributes of an element in document order.
class StringMap {
  public:
    StringMap() = default;
    StringMap(const Attribute* attributes, int count) : attributes_(attributes), count_(count) {}

    int count() const { return count_; }

    // For range-based for loops without copies. Equal names of a document have the same address.
    const Attribute* begin() const { return attributes_; }
    const Attribute* end() const { return attributes_ + count_; }

    // Stores name and value of an attribute and returns 0. Returns -1 and leaves both unchanged if the index is not in
    // 0 to count() - 1.
    int getEntry(int index, kest::String& name, kest::String& value) const;

  private:
    const Attribute* attributes_ = nullptr;
    int count_ = 0;
};

}  // namespace tessa
