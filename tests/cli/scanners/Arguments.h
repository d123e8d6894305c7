#pragma once

#include <cstring>

namespace scanner {

// The value behind an option such as "-o"; null when it is missing.
inline const char* argument(int argc, char** argv, const char* option) {
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], option) == 0) return argv[i + 1];
    }
    return nullptr;
}

}  // namespace scanner
