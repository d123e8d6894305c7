#pragma once

#include <string_view>

#include "kest/Descriptor.h"

namespace toolkit {

// Opens `path`, relative to the directory `tree`, as if that directory were the root of the file system:
// neither ".." nor a symbolic link leads out of it. For systems whose kernel cannot be asked for that.
// On failure no descriptor, and errno tells why.
kest::Descriptor openByComponent(int tree, std::string_view path, int flags);

}  // namespace toolkit
