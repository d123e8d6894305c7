#pragma once

#include <string>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// What a system runs under.
struct Hypervisor {
    bool present = false;
    std::string type;    // "kvm", "vmware", "hyperv", "xen", "virtualbox", "firecracker", "zvm", "lpar"
    std::string vendor;  // "KVM"
    std::string version;
    bool paravirtual = false;
};
Hypervisor findHypervisor(const Root& root);

// The hypervisor that signs itself so in CPUID leaf 40000000h.
Hypervisor hypervisorOfSignature(std::string_view signature);

// "docker", "podman", "lxc", "systemd-nspawn" ...; empty outside of a container.
std::string containerType(const Root& root);

// The id that the container's manager gave it, told by what it has mounted.
std::string containerId(const Root& root);

}  // namespace toolkit::quorvah
