#pragma once

#include <sys/stat.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

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
    kest::Descriptor handle;  // only of find() and open()
    struct stat status {};
    std::string place;    // the path in the tree without links; empty for the top
    bool isLink = false;  // whether the path itself is a link
};

// The directories that led to the latest file. They stay open for a moment, so that further files in them are found with
// few system calls.
class DirectoryTrail {
  public:
    struct Level {
        kest::Descriptor handle;
        struct stat status {};
        std::size_t placeEnd = 0;
    };

    // The directories that a path begins with.
    struct Start {
        std::vector<Level> levels;
        std::string place;       // of the last one, without links
        std::size_t length = 0;  // of the part of the path that leads to it
    };
    Start take(const std::string& path);
    // Keeps these directories. `place` begins with the last one of them. `asked` is a path with a slash at its end that leads
    // there as well, or empty.
    void keep(std::vector<Level> levels, const std::string& place, std::string_view asked);
    void forget() { levels_.clear(); }

  private:
    using Clock = std::chrono::steady_clock;

    bool wasAsked(const std::string& path) const;
    std::size_t countCommon(const std::string& path) const;

    std::string place_;
    std::string asked_;
    std::vector<Level> levels_;
    Clock::time_point opened_;  // when the first one was
};

// Finds files in the scanned tree on behalf of signatures. Each directory on the way, including those of links and the
// parents of "..", must be disclosed to them. Therefore a signature cannot find out whether a name exists in a hidden
// directory. Files on pseudo file systems are not found.
class FileFinder {
  public:
    FileFinder(const Root& root, const Disclosure& disclosure);

    // Follows links; a link at the end of the path only if `follow` is set. The handle is opened with O_PATH. Thread-safe
    // unless `trail` is shared.
    FoundFile find(const std::string& path, bool follow, DirectoryTrail* trail = nullptr) const;
    // Follows links. The handle of a regular file is open for reading. It is closed, and `error` is set, if that failed.
    // `expected`: whether a regular file is known to be there, so that no device would be opened.
    FoundFile open(const std::string& path, bool expected, DirectoryTrail* trail = nullptr) const;
    // The same as find() without a handle.
    FoundFile look(const std::string& path, bool follow, DirectoryTrail* trail = nullptr) const;

    // Whether the top of the tree is on a pseudo file system, which find() does not look at.
    bool topIsPseudo() const { return topIsPseudo_; }

  private:
    bool mayFindAtOnce(const std::string& path) const;
    bool findAtOnce(const std::string& path, bool follow, FoundFile& found) const;
    bool isRegular(const char* inTop) const;
    bool openAtOnce(const std::string& path, bool expected, FoundFile& found) const;

    const Disclosure& disclosure_;
    bool kernelResolves_;
    kest::Descriptor top_;
    struct stat topStatus_ {};
    bool topIsPseudo_ = true;
};

}  // namespace toolkit::quorvis
