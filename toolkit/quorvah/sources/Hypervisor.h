#pragma once

#include <string>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// The hypervisor that the system runs under.
struct Hypervisor {
    bool present = false;
    std::string type;  // "kvm", "qemu", "vmware", "hyperv", "xen", "virtualbox", "firecracker", "zvm", "lpar"
    std::string vendor;  // "KVM"
    std::string version;
    bool paravirtual = false;
    bool typeDenied = false;  // the type may be another one, of which only a file that may not be read tells
};
Hypervisor findHypervisor(const Root& root);

// The hypervisor with this signature in CPUID leaf 40000000h.
Hypervisor hypervisorOfSignature(std::string_view signature);

}  // namespace toolkit::quorvah
