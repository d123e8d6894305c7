#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace toolkit::quorvah {

// A PCI address such as "0000:00:1f.2". The domain may have more than four digits.
struct PciAddress {
    unsigned domain = 0;
    unsigned bus = 0;
    unsigned device = 0;
    unsigned function = 0;
};

std::optional<PciAddress> readPciAddress(std::string_view text);

// The innermost PCI address in the path of a device in sysfs; empty if there is none. For example
//     ../../devices/pci0000:00/0000:00:03.0/virtio2/net/eth0 -> 0000:00:03.0
std::string_view pciAddressIn(std::string_view path);

// The innermost USB device ("1-1.2") in the path of a device; empty if there is none. An adapter's path also contains
// the interface ("1-1.2:1.0").
std::string_view usbDeviceIn(std::string_view path);

}  // namespace toolkit::quorvah
