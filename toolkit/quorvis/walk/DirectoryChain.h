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
    // `behindLink`: a link was followed on the way, so that the directory stands elsewhere than the way says.
    void push(kest::Descriptor directory, bool behindLink) {
        open_.push_back({std::move(directory), behindLink});
    }
    void pop() { open_.pop_back(); }

    const kest::Descriptor& last() const { return open_.back().directory; }
    bool behindLink() const { return open_.back().behindLink; }
    // The open one at this place, counted from 0.
    int at(std::size_t place) const { return open_[place].directory.number(); }
    bool behindLinkAt(std::size_t place) const { return open_[place].behindLink; }
    // Those above the open one at this place.
    std::vector<Identity> above(std::size_t place) const;
    // Whether this directory is one of them.
    bool holds(int directory) const;

  private:
    struct Open {
        kest::Descriptor directory;
        bool behindLink = false;
    };

    std::vector<Identity> above_;
    std::vector<Open> open_;
};

}  // namespace toolkit::quorvis
