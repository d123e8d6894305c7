#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/files/Disclosure.h"

namespace toolkit::quorvis {

// The file that a path leads to.
struct FoundFile {
    // Why no file was found. `error` is the error number of NotOpened.
    enum class Problem : std::uint8_t { None, NotOpened, HiddenDirectory, PseudoFile };
    Problem problem = Problem::None;
    int error = 0;
    kest::Descriptor handle;  // opened with O_PATH
    struct stat status {};
    std::string place;  // the path in the tree without links; empty for the top
};

// Finds files in the scanned tree on behalf of signatures. Each directory on the way, including those of links and the
// parents of "..", must be disclosed to them. Therefore a signature cannot find out whether a name exists in a hidden
// directory. Files on pseudo file systems are not found.
class FileFinder {
  public:
    FileFinder(const Root& root, const Disclosure& disclosure);

    // Follows links; a link at the end of the path only if `follow` is set. Thread-safe.
    FoundFile find(const std::string& path, bool follow) const;

  private:
    const Disclosure& disclosure_;
    kest::Descriptor top_;
    struct stat topStatus_ {};
};

}  // namespace toolkit::quorvis
