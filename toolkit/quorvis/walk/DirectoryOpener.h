// The directories of a walk: how they are opened, and those that lead to the current one.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/files/Disclosure.h"
#include "toolkit/quorvis/files/FileFinder.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"
#include "toolkit/quorvis/walk/GlobPattern.h"
#include "toolkit/quorvis/walk/MountTable.h"

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

// Opens directories for a walk, and decides which ones a walk enters. It never enters
// - /proc, /sys, /dev, /run and other file systems that the kernel generates,
// - the directories of containers and virtual machines, which have the files of other machines (in /var/lib: docker,
//   containers, containerd, lxc, lxd, incus, machines, kubelet; /var/snap/lxd; .local/share/containers of users),
// - directories that other users may not search,
// - directories that the settings exclude.
// Thread-safe.
class DirectoryOpener {
  public:
    DirectoryOpener(const Root& root, const Settings& settings);

    // Has neither a directory nor a problem when there is nothing to enter.
    struct Result {
        kest::Descriptor directory;
        bool behindLink = false;  // whether the path to the directory has a link
        // Why the directory cannot be opened; if it is open, why it cannot be listed.
        std::optional<EventCode> problem;
        std::string text;
    };
    struct Child {
        const char* name = nullptr;
        const std::string& path;  // in the tree, as the walk came here
        bool link = false;        // known to be a link
        bool toList = false;      // whether to list it, or only to open its entries by name
    };
    Result openTop(bool toList) const;
    // Opens a child of the last of these directories. Follows links.
    Result open(const DirectoryChain& parents, const Child& child);

    // Whether the last of these directories may be searched for the child with this path.
    bool maySearch(const DirectoryChain& parents, std::string_view path) const;

    // Whether a remote file system is mounted at this path, to which these directories lead. Even a stat() there may take
    // forever.
    bool isRemote(const DirectoryChain& parents, std::string_view path) const;

    // Whether something is mounted at this path. REQUIRES: the path has no links.
    bool isMountPoint(std::string_view path) const { return mounts_.at(path) != MountTable::Kind::None; }

  private:
    int openAt(int parent, const Child& child, bool across);
    bool isRemote(std::string_view place) const;
    std::string placeOf(const DirectoryChain& parents, std::string_view path) const;
    Result openAllowed(const DirectoryChain& parents, const Child& child);
    Result openPlain(const DirectoryChain& parents, const Child& child);
    Result openMount(const DirectoryChain& parents, const Child& child);
    Result follow(int parent, const Child& child) const;
    Result disclosed(Result result, const std::string& place, bool toList) const;
    Result opened(int parent, const Child& child, int descriptor) const;
    bool isExcluded(std::string_view path) const;
    bool liesInExcluded(std::string_view path) const;
    bool leadsToRemote(const std::string& path) const;

    const Root& root_;
    Disclosure disclosure_;
    FileFinder finder_;
    MountTable mounts_;
    std::vector<PathPattern> exclude_;
    bool crossDevices_;
    bool remote_;
    bool kernelResolves_;
    std::atomic<bool> useNoAtime_ = true;  // until the kernel refuses O_NOATIME
    mutable std::mutex readingLinks_;      // protects the root's count of denials
};

}  // namespace toolkit::quorvis
