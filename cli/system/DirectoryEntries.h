// The entries of a directory, read without taking memory, so that a signal handler can do it.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>

namespace zavcli {

// Calls `visit` with the name of each entry of the open directory except "." and "..". Async-signal-safe if
// `visit` is.
template <typename Visit>
void forEachEntry(int directory, Visit visit) {
    alignas(dirent64) std::array<char, 2048> block;
    for (;;) {
        const ssize_t length = getdents64(directory, block.data(), block.size());
        if (length <= 0) return;
        for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
            const auto* const entry = reinterpret_cast<const dirent64*>(block.data() + at);
            const char* const name = entry->d_name;
            if (std::strcmp(name, ".") != 0 && std::strcmp(name, "..") != 0) visit(name);
            at += entry->d_reclen;
        }
    }
}

}  // namespace zavcli
