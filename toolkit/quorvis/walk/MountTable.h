#pragma once

#include <string>
#include <string_view>
#include <unordered_map>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvis {

// What was mounted in a tree when the table was made.
class MountTable {
  public:
    explicit MountTable(const Root& root);

    enum class Kind : unsigned char { None, Local, Remote };
    // What is mounted at this path of the tree. REQUIRES: the path has no links.
    Kind at(std::string_view path) const;
    bool anyRemote() const { return anyRemote_; }

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    std::unordered_map<std::string, Kind, Hash, std::equal_to<>> mounts_;
    bool anyRemote_ = false;
};

}  // namespace toolkit::quorvis
