#include "kest/MemorySharing.linux.h"

#include <link.h>

#include <cstring>

// One symbol of each sanitizer's run-time library, which is in the process if the program or the library uses it.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
[[gnu::weak]] void __asan_init();
[[gnu::weak]] void __hwasan_init();
[[gnu::weak]] void __msan_init();
[[gnu::weak]] void __tsan_init();
}
// NOLINTEND(bugprone-reserved-identifier)

namespace kest {

namespace {

bool hasSanitizer() {
    return __asan_init != nullptr || __hwasan_init != nullptr || __msan_init != nullptr ||
           __tsan_init != nullptr;
}

// All tools of valgrind preload this library.
bool hasValgrind() {
    const auto isPreload = [](dl_phdr_info* object, std::size_t, void*) {
        return static_cast<int>(std::strstr(object->dlpi_name, "/vgpreload_core") != nullptr);
    };
    return dl_iterate_phdr(isPreload, nullptr) != 0;
}

}  // namespace

bool canShareMemory() {
    static const bool canBe = !hasSanitizer() && !hasValgrind();
    return canBe;
}

}  // namespace kest
