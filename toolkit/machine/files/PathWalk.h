#pragma once

#include <string_view>

#include "kest/Descriptor.h"

namespace toolkit {

// Opens `path`, relative to the directory `tree`, as if that directory were the root of the file system:
// neither ".." nor a symbolic link leads out of it. It is for kernels
// without openat2. On failure the descriptor is not open and errno is set.
kest::Descriptor openByComponent(int tree, std::string_view path, int flags);

}  // namespace toolkit
