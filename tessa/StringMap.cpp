#include "tessa/StringMap.h"

#include <string>

#include "tessa/Utf8.h"

namespace tessa {

int StringMap::getEntry(int index, kest::String& name, kest::String& value) const {
    if (index < 0 || index >= count_) return -1;
    name = *attributes_[index].name;
    value = kest::String(widened(attributes_[index].value));
    return 0;
}

}  // namespace tessa
