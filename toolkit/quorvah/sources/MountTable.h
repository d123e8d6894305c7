#pragma once

#include <vector>

#include "toolkit/machine/files/MountInfo.h"
#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// The mounts of the machine, or else those of /etc/fstab.
std::vector<Mount> readMounts(const Root& root);

}  // namespace toolkit::quorvah
