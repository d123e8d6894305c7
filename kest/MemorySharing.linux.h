#pragma once

namespace kest {

// Whether another process may share the memory of this one. Valgrind and the sanitizers support only threads that do.
bool canShareMemory();

}  // namespace kest
