#pragma once

#include <sys/types.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/files/Disclosure.h"
#include "toolkit/quorvis/files/FileFinder.h"
#include "toolkit/quorvis/files/HashCache.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

class LookupBudget;

// Who searches a content for keys and hashes of passwords, and refuses it. A caller that passes only few values of it on
// searches those, which are much shorter. Such a content is not cached.
enum class KeySearch : std::uint8_t { Whole, ByCaller };

// The outcome of accessing a file.
enum class Access : std::uint8_t { Ok, Missing, Failed };

// The attributes of a file.
struct FileFacts {
    enum class Kind : std::uint8_t { File, Directory, Link, Other };
    Kind kind = Kind::Other;
    std::uint64_t size = 0;  // bytes
    std::uint32_t mode = 0;  // permission bits
    std::uint32_t owner = 0;
    std::int64_t modified = 0;  // seconds since 1970
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    bool atLink = false;  // whether the path itself is a link
};

// The files of the scanned tree as signatures may see them. Every path is resolved below the root. Only regular files are
// read, and none that other users may not read or that contains secrets. Contents are cached.
class Files {
  public:
    Files(const Root& root, const Settings& settings) : Files(root, settings, Disclosure(settings)) {}
    Files(const Root& root, const Settings& settings, Disclosure disclosure)
        : settings_(settings), disclosure_(std::move(disclosure)), finder_(root, disclosure_) {}
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    // The event is set when access is Failed.
    struct Facts {
        Access access = Access::Missing;
        FileFacts facts;
        std::optional<Event> event;
    };
    // The attributes of the file at `path`. Follows links.
    Facts look(const std::string& path);
    // The attributes of the file or link at `path`.
    Facts lookAtLink(const std::string& path);

    struct Names {
        Access access = Access::Missing;
        std::vector<std::string> names;  // sorted, without "." and ".."
        std::optional<Event> event;
    };
    // The names in a directory. Anything else is Missing.
    Names list(const std::string& path);

    // The path without symbolic links: "/usr/bin/dash" for "/bin/sh". `path` itself when there is no such file.
    std::string withoutLinks(const std::string& path);
    std::string linkText(const std::string& path);

    struct Content {
        Access access = Access::Missing;
        std::shared_ptr<const std::string> bytes;  // of access Ok
        std::optional<Event> event;
    };
    // The whole content of a regular file. A file with more than `limit` bytes fails with LimitBytes. Anything else is
    // Missing, with an event unless it is a directory. A file whose size changes during both of two attempts fails.
    Content read(const std::string& path, std::uint64_t limit, KeySearch search = KeySearch::Whole);
    // At most the first `limit` bytes.
    Content readStart(const std::string& path, std::uint64_t limit);

    struct Opening {
        Access access = Access::Missing;
        kest::Descriptor file;  // of access Ok
        std::string start;      // the first bytes of the file
        std::optional<Event> event;
    };
    // Opens a regular file, of which only parts are needed.
    Opening open(const std::string& path, KeySearch search = KeySearch::Whole);

    // The SHA-256 of a regular file in lower-case hexadecimal digits, in `bytes`.
    Content sha256(const std::string& path);
    // Looks up and stores hashes in this cache. REQUIRES: it outlives this object.
    void useHashCache(HashCache& cache) { cache_ = &cache; }

    // A walk has found a regular file at this path. It is opened with one system call less.
    void expectRegular(const std::string& path);

    // Counts the bytes read against this budget, which may throw. REQUIRES: it outlives this object.
    void countIn(LookupBudget& budget) { budget_ = &budget; }

    // Releases the cached contents.
    void forget();

  private:
    struct Opened {
        Content refusal;        // if the file must not be read
        kest::Descriptor file;  // otherwise open for reading
        FileState state;
    };
    struct Cached {
        std::shared_ptr<const std::string> bytes;
        bool whole = false;
    };

    FoundFile checked(const std::string& path, std::optional<Event>& event,
                      const std::function<FoundFile()>& finding) const;
    FoundFile find(const std::string& path, bool follow, std::optional<Event>& event) const {
        return checked(path, event, [&] { return finder_.find(path, follow, &trail_); });
    }
    // The same without a handle.
    FoundFile findStatus(const std::string& path, bool follow, std::optional<Event>& event) const {
        return checked(path, event, [&] { return finder_.look(path, follow, &trail_); });
    }
    Facts lookWith(const std::string& path, bool follow) const;
    Opened openToRead(const std::string& path);
    std::optional<Event> refusalOf(const std::string& path, const FoundFile& found,
                                   const Opened& opened) const;
    void count(std::uint64_t bytes) const;
    Content readOpened(const std::string& path, const Opened& opened, std::uint64_t limit, bool whole,
                       KeySearch search);
    static std::uint64_t heldBy(const Cached& cached);
    void keep(const FileState& state, Cached cached);

    const Settings& settings_;
    Disclosure disclosure_;
    FileFinder finder_;
    mutable DirectoryTrail trail_;
    std::unordered_set<std::size_t> regular_;  // hashes of paths
    LookupBudget* budget_ = nullptr;
    std::map<FileState, Cached> contents_;
    std::deque<FileState> order_;  // keys of contents_, oldest first
    std::uint64_t held_ = 0;       // bytes in contents_
    std::map<FileState, std::shared_ptr<const std::string>> sums_;
    HashCache* cache_ = nullptr;
};

}  // namespace toolkit::quorvis
