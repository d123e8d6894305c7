#include <sys/mman.h>

#include "tessa/Pages.h"

namespace tessa {

void useLargePages(void* block, std::size_t size) {
    ::madvise(block, size, MADV_HUGEPAGE);
}

}  // namespace tessa
