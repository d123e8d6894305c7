#pragma once

namespace kest {

// Whether another process may use the memory of this one. Tools that watch the memory of a process, such as valgrind
// and the sanitizers, know of threads only.
bool memoryCanBeShared();

}  // namespace kest
