#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kest/Descriptor.h"
#include "toolkit/machine/text/Checked.h"

namespace toolkit {

// The tree of files of the scanned machine: that of the machine itself, or what lies below a directory. All
// paths are absolute ("/proc/cpuinfo") and all symbolic links, absolute ones too, stay inside the tree.
//
// What is missing reads as empty. What may not be read does so too, and is counted: the group that asked for
// it is then reported as cut short. So is what is larger than anything real.
class Root {
  public:
    enum class Lookup { Kernel, ByComponent };
    using Clock = std::chrono::steady_clock;

    // The time in which the tree was to be looked at is over.
    class OutOfTime : public std::exception {
      public:
        const char* what() const noexcept override { return "out of time"; }
    };

    // The machine that the scanner runs on.
    Root();
    // The tree below `directory`. Throws std::system_error when it is no directory that can be opened.
    // `lookup` is there for tests: the kernel is asked to keep lookups inside where it can.
    explicit Root(const std::string& directory, Lookup lookup = Lookup::Kernel);

    // Whether system calls tell of the scanned machine too: not so below a directory.
    bool live() const { return !tree_.isOpen(); }
    // The directory as it was given; empty for the live machine.
    const std::string& directory() const { return directory_; }
    // Who keeps lookups inside: the kernel unless it lacks the call or a filter refuses it.
    Lookup lookup() const { return lookup_; }

    static constexpr std::size_t kFileLimit = std::size_t{64} << 20;
    static constexpr std::size_t kLineLimit = std::size_t{64} << 10;
    static constexpr std::size_t kMaxNames = 200'000;

    // The content of a regular file; none when it cannot be read or is larger than `limit`.
    std::optional<std::string> read(std::string_view path, std::size_t limit = kFileLimit) const;
    // The first line of a file without the white space around it; none of one that is longer than kLineLimit.
    std::string readLine(std::string_view path) const;
    // The decimal number that a file's first line is; none for one that has a sign or does not fit.
    Count readCount(std::string_view path) const;

    // The names in a directory, sorted, without "." and "..": kMaxNames of them when there are more.
    std::vector<std::string> list(std::string_view path) const;
    // The text of a symbolic link, and the last component of it.
    std::string readLink(std::string_view path) const;
    std::string linkName(std::string_view path) const;

    // Of what a path leads to, symbolic links followed.
    bool exists(std::string_view path) const;
    bool isDirectory(std::string_view path) const;

    // Opens for reading, with these flags of open() besides O_CLOEXEC, O_NOCTTY and O_NONBLOCK.
    kest::Descriptor open(std::string_view path, int flags = 0) const;

    // Opens with exactly these flags besides O_CLOEXEC, and follows no link that the kernel makes up, such as
    // /proc/self/root. `resolve` adds RESOLVE_ flags of openat2, which count only where the kernel does the
    // lookup. On failure errno tells why.
    kest::Descriptor openStrictly(std::string_view path, int flags, std::uint64_t resolve = 0) const;
    // The path in this tree by which the kernel knows an open file; empty when it cannot be told.
    std::string pathOf(const kest::Descriptor& file) const;

    // After this time every look at the tree throws OutOfTime; none for any time.
    void watch(std::optional<Clock::time_point> deadline) { deadline_ = deadline; }
    std::optional<Clock::time_point> deadline() const { return deadline_; }
    void checkTime() const {
        if (deadline_ && Clock::now() >= *deadline_) throw OutOfTime();
    }

    // How often a file or a directory was too large so far.
    int excesses() const { return excesses_; }
    // How often a permission was lacking so far.
    int denials() const { return denials_; }
    // Forgets the denials beyond this count, those of files that the asker could do without.
    void forgetDenials(int count) const { denials_ = count; }

  private:
    kest::Descriptor openBelow(std::string_view path, int flags) const;
    void note(int error) const;
    bool readUpTo(std::string_view path, std::size_t most, std::string& content) const;

    kest::Descriptor tree_;
    std::string directory_;
    Lookup lookup_ = Lookup::Kernel;
    std::optional<Clock::time_point> deadline_;
    mutable int denials_ = 0;
    mutable int excesses_ = 0;
};

}  // namespace toolkit
