#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kVirtualMachineGuestFields[] = {
    {.name = "VirtualSystemIdentifier",
     .privacy = Privacy::Serial,
     .access = Access::RootSeesMore,
     .meaning = "identifier of the virtual machine or container",
     .source = "`/sys/class/dmi/id/product_uuid`; `/sys/hypervisor/uuid`; `/proc/self/mountinfo`; "
               "`/proc/1/cgroup`"},
    {.name = "VirtualSystemType",
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "`kvm`, `qemu`, `vmware`, `hyperv`, `xen`, `container` and so on; `qemu` is not known to be "
                "run by KVM",
     .source = "CPUID; `/proc/cpuinfo`; `/sys/hypervisor`; DMI; `/proc/sysinfo`; device tree; PCI devices; "
               "container markers"},
    {.name = "HypervisorVendor",
     .liveSeesMore = true,
     .meaning = "maker of the hypervisor",
     .source = "CPUID; `/sys/hypervisor`; `/proc/sysinfo`"},
    {.name = "HypervisorVersion",
     .meaning = "version of the hypervisor",
     .source = "`/sys/hypervisor/version`; `/proc/sysinfo`"},
    {.name = "ContainerType",
     .access = Access::RootSeesMore,
     .meaning =
         "`docker`, `podman`, `lxc`, `wsl` and so on; `kubernetes` if nothing tells which program runs "
         "the container",
     .source = "release of the kernel; `/run/systemd/container`; `/run/host/container-manager`; "
               "`/proc/1/environ`; `/run/.containerenv`; `/.dockerenv`; `/proc/1/cgroup`; "
               "`/proc/self/mountinfo`; `/dev/lxd/sock`"},
    {.name = "VirtualizationMode",
     .type = Type::Choice,
     .choices = "full|para",
     .meaning = "kind of virtualization, by unmodified (`full`) or adapted kernels",
     .source = "`/sys/hypervisor`; `/proc/cpuinfo`"},
    {.name = "ClockSource",
     .meaning = "clock source of the kernel",
     .source = "`/sys/devices/system/clocksource`"},
    {.name = "CloudPlatform", .meaning = "cloud provider, `aws`, `azure` and so on", .source = "DMI"},
};

inline constexpr Group kVirtualMachineGuest{
    .id = 50,
    .name = "VirtualMachineGuest",
    .element = "VirtualMachineGuest",
    .about =
        "The virtual machine or container that the system runs in. One instance, or none on a physical "
        "machine.",
    .fields = kVirtualMachineGuestFields,
    .columns = "VirtualSystemType HypervisorVendor VirtualizationMode",
};

}  // namespace schema
