#pragma once

#include "kest/String.h"

namespace tessa {

// One attribute; both texts live as long as the document's.
struct Attribute {
    const kest::String* name;
    const wchar_t* value;
};

// The attributes of an element in document order.
class StringMap {
  public:
    StringMap() = default;
    StringMap(const Attribute* attributes, int count) : attributes_(attributes), count_(count) {}

    int count() const { return count_; }

    // For a range-based for loop without copies. Names are held once a document: equal ones have one address.
    const Attribute* begin() const { return attributes_; }
    const Attribute* end() const { return attributes_ + count_; }

    // 0 with both texts set; -1, and both untouched, for an index outside 0 to count() - 1.
    int getEntry(int index, kest::String& name, kest::String& value) const;

  private:
    const Attribute* attributes_ = nullptr;
    int count_ = 0;
};

}  // namespace tessa
