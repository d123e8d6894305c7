#pragma once

#include <sys/types.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/files/Disclosure.h"
#include "toolkit/quorvis/files/FileFinder.h"
#include "toolkit/quorvis/files/FileState.h"
#include "toolkit/quorvis/files/HashCache.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

class LookupBudget;

// How looking at a file went.
enum class Access : std::uint8_t { Ok, Missing, Failed };

// What the file system tells of a file.
struct FileFacts {
    enum class Kind : std::uint8_t { File, Directory, Link, Other };
    Kind kind = Kind::Other;
    std::uint64_t size = 0;  // bytes
    std::uint32_t mode = 0;  // permission bits
    std::uint32_t owner = 0;
    std::int64_t modified = 0;  // seconds since 1970
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
};

// The files of the scanned tree, as signatures may see them: every path is resolved below the root; nothing but
// regular files is read; what others may not see, and what holds secrets, is not read at all; each file is read once
// while it is asked for again and again.
class Files {
  public:
    Files(const Root& root, const Settings& settings) : Files(root, settings, Disclosure(settings)) {}
    Files(const Root& root, const Settings& settings, Disclosure disclosure)
        : settings_(settings), disclosure_(std::move(disclosure)), finder_(root, disclosure_) {}
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    // A failure comes with the event that tells why.
    struct Facts {
        Access access = Access::Missing;
        FileFacts facts;
        std::optional<Event> event;
    };
    // Of what `path` leads to, links followed.
    Facts look(const std::string& path);
    // Of the link itself where it is one.
    Facts lookAtLink(const std::string& path);

    struct Names {
        Access access = Access::Missing;
        std::vector<std::string> names;  // sorted, without "." and ".."
        std::optional<Event> event;
    };
    // What a directory holds; of anything else Missing.
    Names list(const std::string& path);

    // The path without symbolic links, "/usr/bin/dash" for "/bin/sh"; `path` itself when nothing is there.
    std::string withoutLinks(const std::string& path);
    std::string linkText(const std::string& path);

    struct Content {
        Access access = Access::Missing;
        std::shared_ptr<const std::string> bytes;  // of access Ok
        std::optional<Event> event;
    };
    // The whole content of a regular file of at most `limit` bytes: a larger one fails with LimitBytes. What is no
    // regular file is Missing, and if it is no directory either, an event says so. A file whose size changes while it
    // is read is read once more and then fails.
    Content read(const std::string& path, std::uint64_t limit);
    // At most the first `limit` bytes.
    Content readStart(const std::string& path, std::uint64_t limit);

    struct Opening {
        Access access = Access::Missing;
        kest::Descriptor file;  // of access Ok
        std::optional<Event> event;
    };
    // A regular file, for those who need some parts of a large one.
    Opening open(const std::string& path);

    // The SHA-256 of a regular file in lower-case hexadecimal digits, in `bytes`.
    Content sha256(const std::string& path);
    // Takes such sums from there, and gives them to it. It must outlive the files.
    void keepSumsIn(HashCache& cache) { cache_ = &cache; }

    // What is read is counted there, which may end that. It must outlive the files.
    void countIn(LookupBudget& budget) { budget_ = &budget; }

    // Lets go of the contents that are kept.
    void forget();

  private:
    struct Opened {
        Content refusal;        // when the file is not to be read
        kest::Descriptor file;  // else open for reading
        FileState state;
    };
    struct Cached {
        std::shared_ptr<const std::string> bytes;
        bool whole = false;
    };

    FoundFile find(const std::string& path, bool follow, std::optional<Event>& event) const;
    Facts lookWith(const std::string& path, bool follow) const;
    Opened openToRead(const std::string& path);
    std::optional<Event> refusalOf(const std::string& path, const FoundFile& found,
                                   const Opened& opened) const;
    void count(std::uint64_t bytes) const;
    Content readOpened(const std::string& path, const Opened& opened, std::uint64_t limit, bool whole);
    static std::uint64_t heldBy(const Cached& cached);
    void keep(const FileState& state, Cached cached);

    const Settings& settings_;
    Disclosure disclosure_;
    FileFinder finder_;
    LookupBudget* budget_ = nullptr;
    std::map<FileState, Cached> contents_;
    std::deque<FileState> order_;  // of contents_, the oldest first
    std::uint64_t held_ = 0;       // bytes in contents_
    std::map<FileState, std::shared_ptr<const std::string>> sums_;
    HashCache* cache_ = nullptr;
};

}  // namespace toolkit::quorvis
