#pragma once

#include <cstdint>
#include <vector>

#include "kest/Descriptor.h"

namespace toolkit::quorvis {

// The directories that lead from the top of a walk to the current one. The lower ones are open here. Those above them are
// open in another thread; only their identities are known here.
class DirectoryChain {
  public:
    struct Identity {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        bool operator==(const Identity&) const = default;
    };

    // Starts again below these directories.
    void start(std::vector<Identity> above);
    // `behindLink`: a link was followed, so that the directory is not where the path of the walk says.
    void push(kest::Descriptor directory, bool behindLink) {
        open_.push_back({std::move(directory), behindLink});
    }
    void pop() { open_.pop_back(); }

    const kest::Descriptor& last() const { return open_.back().directory; }
    bool behindLink() const { return open_.back().behindLink; }
    // The open directory with this index.
    int at(std::size_t index) const { return open_[index].directory.number(); }
    bool behindLinkAt(std::size_t index) const { return open_[index].behindLink; }
    // The directories above the open one with this index.
    std::vector<Identity> above(std::size_t index) const;
    // Whether this directory is in the chain.
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
