#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/files/Disclosure.h"

namespace toolkit::quorvis {

// What a path leads to.
struct FoundFile {
    // Why nothing was found; `error` tells of NotOpened.
    enum class Problem : std::uint8_t { None, NotOpened, HiddenDirectory, MadeByKernel };
    Problem problem = Problem::None;
    int error = 0;
    kest::Descriptor handle;  // not open for reading
    struct stat status {};
    std::string place;  // the path in the tree without links; empty for the top
};

// Finds files in the scanned tree, as signatures may: each directory on the way, that of a link and that above a ".."
// too, must be one in which they may look. So it is the same whether a name is missing in a hidden directory or there.
// Nothing is found where the kernel makes files up.
class FileFinder {
  public:
    FileFinder(const Root& root, const Disclosure& disclosure);

    // Links are followed, the last one if `follow` says so. Several threads may ask.
    FoundFile find(const std::string& path, bool follow) const;

  private:
    const Disclosure& disclosure_;
    kest::Descriptor top_;
    struct stat topStatus_ {};
};

}  // namespace toolkit::quorvis
