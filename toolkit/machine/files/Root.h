#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/AvoidedMounts.h"
#include "toolkit/machine/text/Checked.h"

namespace toolkit {

class Recorder;

// The file tree of the scanned machine: the live file system, or a directory with a copy. All paths are absolute
// ("/proc/cpuinfo"), and all symbolic links, including absolute ones, stay inside the tree.
//
// A missing file reads as empty. So does a file that may not be read or is too large, which is also counted: the group that
// asked for it is then reported as partial.
class Root {
  public:
    enum class Lookup { Kernel, ByComponent };
    using Clock = std::chrono::steady_clock;

    // Thrown when the time for reading the tree is over.
    class OutOfTime : public std::exception {
      public:
        const char* what() const noexcept override { return "out of time"; }
    };

    // The machine that the scanner runs on.
    Root();
    // The tree below `directory`. Throws std::system_error when it cannot be opened as a directory. Only tests set `lookup`;
    // by default the kernel keeps lookups inside the tree if it can.
    explicit Root(const std::string& directory, Lookup lookup = Lookup::Kernel);

    // Whether system calls describe the scanned machine, which they do not for a directory.
    bool live() const { return !tree_.isOpen(); }
    // Whether the files are those of the running machine: users may change them, and file systems may not answer.
    bool running() const { return live() || (recorder_ != nullptr && directory_ == "/"); }
    // The directory as given to the constructor; empty for the live machine.
    const std::string& directory() const { return directory_; }
    // Who keeps lookups inside the tree: the kernel, unless it lacks the call or a filter denies it.
    Lookup lookup() const { return lookup_; }

    static constexpr std::size_t kFileLimit = std::size_t{64} << 20;
    static constexpr std::size_t kLineLimit = std::size_t{64} << 10;
    static constexpr std::size_t kMaxNames = 200'000;

    // The content of a regular file; nothing when it cannot be read or is larger than `limit`.
    std::optional<std::string> read(std::string_view path, std::size_t limit = kFileLimit) const;
    // The first `size` bytes of a regular file; empty when it cannot be read.
    std::string readStart(std::string_view path, std::size_t size) const;
    // The first line of a file without surrounding white space; empty when it is longer than kLineLimit.
    std::string readLine(std::string_view path) const;
    // The decimal number in a file's first line; nothing when it has a sign or does not fit.
    Count readCount(std::string_view path) const;

    // The names in a directory, sorted, without "." and "..". At most kMaxNames.
    std::vector<std::string> list(std::string_view path) const;
    // The target of a symbolic link, and the last component of the target.
    std::string readLink(std::string_view path) const;
    std::string linkName(std::string_view path) const;

    // Both follow symbolic links.
    bool exists(std::string_view path) const;
    bool isDirectory(std::string_view path) const;

    // Opens for reading, with these flags of open() besides O_CLOEXEC, O_NOCTTY and O_NONBLOCK.
    kest::Descriptor open(std::string_view path, int flags = 0) const;

    // Opens with exactly these flags and O_CLOEXEC. Magic links, such as /proc/self/root, are not followed. `resolve` adds
    // RESOLVE_ flags of openat2, which have an effect only if the kernel does the lookup. Sets errno on failure.
    kest::Descriptor openStrictly(std::string_view path, int flags, std::uint64_t resolve = 0) const;
    // The path of an open file within this tree, as the kernel knows it; empty when it is unknown.
    std::string pathOf(const kest::Descriptor& file) const;

    // From now on writes down what is read. REQUIRES: the recorder lives as long as this object.
    void record(Recorder* recorder) { recorder_ = recorder; }
    // For what a caller opens without this class. Does nothing unless a recorder is set.
    void noteOpened(std::string_view path, int flags, const kest::Descriptor& opened) const;

    // From now on, nothing that another machine or a program provides is looked at: network file systems, FUSE, and what
    // would be mounted automatically. The file system of the tree itself is.
    void stayLocal();
    const AvoidedMounts& avoided() const { return avoided_; }

    // After this time every access to the tree throws OutOfTime.
    void watch(std::optional<Clock::time_point> deadline) { deadline_ = deadline; }
    std::optional<Clock::time_point> deadline() const { return deadline_; }
    void checkTime() const {
        if (deadline_ && Clock::now() >= *deadline_) throw OutOfTime();
    }

    // The number of files and directories so far that were too large.
    int excesses() const { return excesses_; }
    // The number of accesses so far that were avoided, see stayLocal().
    int avoidances() const { return avoidances_; }
    // The number of accesses so far that were denied.
    int denials() const { return denials_; }
    // Resets the count of denials, after accesses that the caller does not depend on.
    void forgetDenials(int count) const { denials_ = count; }

  private:
    kest::Descriptor openAsTold(std::string_view path, int flags, std::uint64_t resolve) const;
    kest::Descriptor openBelow(std::string_view path, int flags) const;
    kest::Descriptor openLocally(std::string_view path, int flags, std::uint64_t resolve) const;
    kest::Descriptor openOnOneMount(const std::string& path, int flags, std::uint64_t resolve) const;
    const kest::Descriptor& mountAt(std::string_view path) const;
    void note(int error) const;
    bool readUpTo(std::string_view path, std::size_t most, std::string& content) const;

    kest::Descriptor tree_;
    std::string directory_;
    Lookup lookup_ = Lookup::Kernel;
    std::optional<Clock::time_point> deadline_;
    Recorder* recorder_ = nullptr;
    AvoidedMounts avoided_;
    mutable std::map<std::string, kest::Descriptor, std::less<>> mounts_;  // mount points of the live machine
    mutable int avoidances_ = 0;
    mutable int denials_ = 0;
    mutable int excesses_ = 0;
};

}  // namespace toolkit
