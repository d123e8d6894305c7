#pragma once

#include <cstdint>

namespace toolkit {

// The system call openat2. Returns a descriptor, or -1 with errno set.
int openResolved(int directory, const char* path, int flags, std::uint64_t resolve);

}  // namespace toolkit
