#pragma once

#include <string>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// The network namespace of this process. /sys/class/net shows the interfaces of the namespace that it was mounted in,
// which may be another one.
class NetworkNamespace {
  public:
    NetworkNamespace();

    // Whether the interface in /sys/class/net is the one of this name in this namespace. True if the kernel cannot be
    // asked.
    bool has(const Root& root, const std::string& interface) const;

  private:
    kest::Descriptor socket_;
};

}  // namespace toolkit::quorvah
