#pragma once

namespace toolkit::quorvis {

class Machine;

// The installed packages of the machine, found by name.
class PackageIndex {
  public:
    // (the engineer of Packages: rows, lookup by name and by expression; loaded from a Machine on the first question)
};

}  // namespace toolkit::quorvis
