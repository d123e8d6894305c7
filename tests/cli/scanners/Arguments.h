#pragma once

#include <cstring>

namespace scanner {

// The value of an option such as "-o"; null if it is missing.
inline const char* argument(int argc, char** argv, const char* option) {
    for (int i = 1; i + 1 < argc; ++i) {
        if (std::strcmp(argv[i], option) == 0) return argv[i + 1];
    }
    return nullptr;
}

}  // namespace scanner
