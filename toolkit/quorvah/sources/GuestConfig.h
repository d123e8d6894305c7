// The configurations of virtual machines and containers that this machine hosts.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/text/Checked.h"

namespace toolkit::quorvah {

struct GuestConfig {
    std::string uuid;
    std::string name;
    std::string type;  // "kvm", "qemu", "xen", "lxc"
    Count processors;
    Count memory;  // bytes
    std::vector<std::string> macAddresses;
    std::vector<std::string> disks;  // files, devices or names of volumes
    std::optional<bool> starts;      // whether it starts with the machine
};

// A domain of libvirt. Nothing if the document is not one.
std::optional<GuestConfig> parseDomain(std::string_view document);

// A machine of Proxmox VE, without its snapshots.
GuestConfig parseProxmox(std::string_view text);

// A container of LXC.
GuestConfig parseLxc(std::string_view text);

}  // namespace toolkit::quorvah
