#include "cli/system/TreeRemoval.h"

#include <fcntl.h>
#include <unistd.h>

#include "cli/system/DirectoryEntries.h"

namespace zavcli {

namespace {

constexpr int kMaxDepth = 16;   // a workspace is three levels deep
constexpr int kMaxPasses = 20;  // another process may keep adding files

void remove(int directory, const char* name, int depth) {
    if (unlinkat(directory, name, 0) == 0 || depth > kMaxDepth) return;
    for (int pass = 0; pass < kMaxPasses && unlinkat(directory, name, AT_REMOVEDIR) != 0; ++pass) {
        const int content = openat(directory, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
        if (content < 0) return;
        forEachEntry(content, [=](const char* entry) { remove(content, entry, depth + 1); });
        close(content);
    }
}

}  // namespace

void removeTree(int directory, const char* name) {
    remove(directory, name, 0);
}

}  // namespace zavcli
