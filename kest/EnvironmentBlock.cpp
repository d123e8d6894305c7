#include "kest/EnvironmentBlock.h"

#include <cstring>

namespace kest {

std::vector<const char*> splitEnvironmentBlock(const char* block) {
    std::vector<const char*> entries;
    if (block == nullptr) return entries;
    for (const char* entry = block; entry[0] != '\0' || entry[1] != '\0'; entry += std::strlen(entry) + 1) {
        if (*entry != '\0') entries.push_back(entry);
    }
    return entries;
}

}  // namespace kest
