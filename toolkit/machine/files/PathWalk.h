#pragma once

#include <string_view>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/AvoidedMounts.h"

namespace toolkit {

// Opens `path`, relative to the directory `tree`, as if that directory were the root of the file system:
// neither ".." nor a symbolic link leads out of it. Does not enter the avoided mounts, where errno is EREMOTE. It is for kernels
// without openat2, and for what openat2 does not offer. On failure the descriptor is not open and errno is set.
kest::Descriptor openByComponent(int tree, std::string_view path, int flags,
                                 const AvoidedMounts& avoided = AvoidedMounts());

}  // namespace toolkit
