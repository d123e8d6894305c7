#pragma once

#include "kest/String.h"

namespace tessa {

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

    // 0 with both texts set; -1, and both untouched, for an index outside 0 to count() - 1.
    int getEntry(int index, kest::String& name, kest::String& value) const;

  private:
    const Attribute* attributes_ = nullptr;
    int count_ = 0;
};

}  // namespace tessa
