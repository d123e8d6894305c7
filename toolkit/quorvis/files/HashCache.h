#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/OutputFile.h"
#include "toolkit/quorvis/files/FileState.h"
#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// The time in nanoseconds since 1970.
std::int64_t currentTime();

// Hashes of files, kept in a file from run to run. Whatever is wrong with that file costs time and an event, never the
// scan. For one thread: only walks have several, and they look at names alone.
class HashCache {
  public:
    // Opens the file, which is read when it is first asked. It must be the effective user's own and writable to nobody
    // else; what is not, or is no such cache at all, is neither believed nor replaced. An empty path is no cache.
    explicit HashCache(std::string path, std::int64_t now = currentTime());

    // The hash of the file in exactly this state; null when it is not known.
    const std::string* find(const FileState& state, std::string_view algorithm);
    // In place of that of an earlier state of the file. Not for one that changed less than two seconds before `now`: it
    // may change once more without a new time.
    void remember(const FileState& state, std::string_view algorithm, std::string hash);

    // Writes the file when something is new. Returns all that went wrong since the beginning.
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

    std::string path_;  // empty when there is nothing to read or write
    std::int64_t now_;
    kest::Descriptor file_;  // until it is read
    std::uint64_t size_ = 0;
    std::map<Key, Entry> entries_;
    bool changed_ = false;
    std::vector<Event> events_;
};

}  // namespace toolkit::quorvis
