#pragma once

#include <cstdint>
#include <vector>

#include "kest/Descriptor.h"

namespace toolkit::quorvis {

// The directories that lead from the top of a walk to the current one: the lower ones open, of those above, which
// another thread holds open, only what tells them from others.
class DirectoryChain {
  public:
    struct Identity {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        bool operator==(const Identity&) const = default;
    };

    // Begins anew below these directories.
    void start(std::vector<Identity> above);
    void push(kest::Descriptor directory) { open_.push_back(std::move(directory)); }
    void pop() { open_.pop_back(); }

    int last() const { return open_.back().number(); }
    // The open one at this place, counted from 0.
    int at(std::size_t place) const { return open_[place].number(); }
    // Those above the open one at this place.
    std::vector<Identity> above(std::size_t place) const;
    // Whether this directory is one of them.
    bool holds(int directory) const;

  private:
    std::vector<Identity> above_;
    std::vector<kest::Descriptor> open_;
};

}  // namespace toolkit::quorvis
