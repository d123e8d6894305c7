#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/OutputFile.h"
#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// Identifies one state of one file. Times are in nanoseconds since 1970.
struct FileState {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t changed = 0;   // set by the kernel on every change of the content, mode or times
    std::int64_t modified = 0;  // can be set by the owner
    auto operator<=>(const FileState&) const = default;
};

// Whether a change of the content of this file always changes its state. This holds for writable local file systems only:
// files of the kernel, of programs and of other machines may change without a new state, and the times in images are those
// that their creator chose.
bool keepsStates(const kest::Descriptor& file);

// The current time in nanoseconds since 1970.
std::int64_t currentTime();

// A persistent cache of file hashes. A problem with the cache file adds an event, but never fails the scan. Not
// thread-safe: the threads of a walk only look at names.
class HashCache {
  public:
    // Opens the cache file. It is read by the first call of find() or remember(). A file that belongs to another user, is
    // writable by others, or is not a cache is neither used nor replaced. With an empty path there is no cache.
    explicit HashCache(std::string path, std::int64_t now = currentTime());

    // The hash of a file in exactly this state; null when it is unknown.
    const std::string* find(const FileState& state, std::string_view algorithm);
    // Stores the hash, replacing that of an earlier state of the file. Ignores a file that changed less than two seconds
    // before `now`, because it may change again within the resolution of its times.
    void remember(const FileState& state, std::string_view algorithm, std::string hash);

    // Writes the cache file if there are new hashes. Returns the events since construction.
    std::vector<Event> save();

  private:
    struct Key {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::string algorithm;
        auto operator<=>(const Key&) const = default;
    };
    struct Entry {
        FileState state;
        std::string hash;
        bool used = false;  // in this run
    };
    enum class Reading : std::uint8_t { Done, NoCache, OtherVersion, TooLarge, Damaged };

    void open();
    void load();
    Reading readFile();
    bool readEntry(std::string_view line);
    void write(const TextSink& sink) const;
    void giveUp(EventCode code, const std::string& reason);

    std::string path_;  // empty when there is no cache
    std::int64_t now_;
    kest::Descriptor file_;  // open until it is read
    std::uint64_t size_ = 0;
    std::map<Key, Entry> entries_;
    bool changed_ = false;
    std::vector<Event> events_;
};

}  // namespace toolkit::quorvis
