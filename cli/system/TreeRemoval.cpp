#include "cli/system/TreeRemoval.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstring>

namespace zavcli {

namespace {

constexpr int kDeepest = 16;     // the directories of a workspace are three deep
constexpr int kMostPasses = 20;  // somebody may go on to put files into it

void remove(int directory, const char* name, int depth);

bool isItselfOrParent(const char* name) {
    return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

void removeContent(int directory, int depth) {
    alignas(dirent64) std::array<char, 2048> block;
    for (;;) {
        const ssize_t length = getdents64(directory, block.data(), block.size());
        if (length <= 0) return;
        for (std::size_t at = 0; at < static_cast<std::size_t>(length);) {
            const auto* const entry = reinterpret_cast<const dirent64*>(block.data() + at);
            if (!isItselfOrParent(entry->d_name)) remove(directory, entry->d_name, depth + 1);
            at += entry->d_reclen;
        }
    }
}

void remove(int directory, const char* name, int depth) {
    if (unlinkat(directory, name, 0) == 0 || depth > kDeepest) return;
    for (int pass = 0; pass < kMostPasses && unlinkat(directory, name, AT_REMOVEDIR) != 0; ++pass) {
        const int file = openat(directory, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (file < 0) return;
        removeContent(file, depth);
        close(file);
    }
}

}  // namespace

void removeTree(int directory, const char* name) {
    remove(directory, name, 0);
}

}  // namespace zavcli
