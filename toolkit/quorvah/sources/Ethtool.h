#pragma once

#include <optional>
#include <string>

#include "kest/Descriptor.h"

namespace toolkit::quorvah {

// What a driver tells of itself; what it does not tell is empty.
struct DriverInfo {
    std::string name;
    std::string version;
    std::string firmwareVersion;
};

// Asks the drivers of this machine's network interfaces; needs no privilege.
class Ethtool {
  public:
    Ethtool();

    std::optional<DriverInfo> driver(const std::string& interface) const;
    // "02:fc:00:00:00:01"; empty when the hardware has no address of its own.
    std::string permanentAddress(const std::string& interface) const;

  private:
    bool ask(const std::string& interface, void* command) const;

    kest::Descriptor socket_;
};

}  // namespace toolkit::quorvah
