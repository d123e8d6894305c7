#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/MountInfo.h"
#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// Files below a home directory, whose owner may be hostile. No symbolic link below the directory is followed, so that a user
// cannot show others what only root may read. Only regular files of the user are read, up to 1 MiB. What lies on another
// machine or is provided by a program is not touched, because it may never answer.
class HomeFiles {
  public:
    // `mounts` are those of the machine. REQUIRES: they and `root` outlive this object.
    HomeFiles(const Root& root, const std::vector<Mount>& mounts, std::string home, std::uint32_t owner);

    // Whether the directory could be opened.
    bool isOpen() const { return directory_.isOpen(); }
    // Whether something was not read: without permission, or since it is not a local regular file of its owner.
    bool denied() const { return denied_; }
    bool refused() const { return refused_; }

    // A file by its path below the directory: ".config/kscreenlockerrc".
    std::optional<std::string> read(std::string_view path);

  private:
    bool isLocal(const std::string& path) const;
    void note(int error);
    kest::Descriptor openFile(std::string_view path);

    const Root& root_;
    const std::vector<Mount>& mounts_;
    std::string home_;
    std::uint32_t owner_;
    kest::Descriptor directory_;
    bool denied_ = false;
    bool refused_ = false;
};

}  // namespace toolkit::quorvah
