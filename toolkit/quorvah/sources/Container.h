#pragma once

#include <string>
#include <string_view>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// "docker", "podman", "lxc", "systemd-nspawn", "wsl" and so on; empty outside a container. A denial is counted only if a
// readable file could have told more.
std::string containerType(const Root& root);

// The id of the container, taken from the paths that its manager mounted or from its control group.
std::string containerId(const Root& root);

// Whether a kernel with this release is that of the Windows Subsystem for Linux.
bool isReleaseOfWsl(std::string_view release);

}  // namespace toolkit::quorvah
