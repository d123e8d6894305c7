#pragma once

#include <optional>
#include <string>

#include "kest/Descriptor.h"

namespace toolkit::quorvah {

// What a driver reports about itself. Unknown texts are empty.
struct DriverInfo {
    std::string name;
    std::string version;
    std::string firmwareVersion;
};

// Queries the drivers of the network interfaces of this machine. Needs no privilege.
class Ethtool {
  public:
    Ethtool();

    std::optional<DriverInfo> driver(const std::string& interface) const;
    // "02:fc:00:00:00:01"; empty if the hardware has no permanent address.
    std::string permanentAddress(const std::string& interface) const;

  private:
    bool ask(const std::string& interface, void* command) const;

    kest::Descriptor socket_;
};

}  // namespace toolkit::quorvah
