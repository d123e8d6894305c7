#include "kest/SharedMemory.linux.h"

#include <link.h>

#include <cstring>

// What each of the sanitizers brings into the process, in the program, the library or both.
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

// All its tools load this into the program.
bool hasValgrind() {
    const auto isValgrinds = [](dl_phdr_info* object, std::size_t, void*) {
        return static_cast<int>(std::strstr(object->dlpi_name, "/vgpreload_core") != nullptr);
    };
    return dl_iterate_phdr(isValgrinds, nullptr) != 0;
}

}  // namespace

bool memoryCanBeShared() {
    static const bool canBe = !hasSanitizer() && !hasValgrind();
    return canBe;
}

}  // namespace kest
