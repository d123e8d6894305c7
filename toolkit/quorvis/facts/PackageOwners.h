#pragma once

#include <compare>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/facts/PackageIndex.h"
#include "toolkit/quorvis/files/LookupBudget.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// Which package a file belongs to, as the package managers record it. The lists of files are read on the first lookup. Of
// each path only a hash is kept, 12 bytes with the package.
class PackageOwners {
  public:
    // REQUIRES: all arguments outlive this.
    PackageOwners(const Root& root, const Settings& settings, LookupBudget& budget, PackageIndex& packages)
        : root_(root), settings_(settings), budget_(budget), packages_(packages) {}

    // The package with this file; null when none has it. Of several packages with the same file it is the first. `path` must
    // not contain links.
    const PackageIndex::Row* ownerOf(std::string_view path);

    // Whether a package without a list that could be read may have the file instead of none. REQUIRES: ownerOf() was called.
    bool incomplete() const { return incomplete_; }
    // Why. Only the first call returns the events.
    std::vector<Event> takeEvents() { return std::exchange(events_, {}); }

  private:
    friend class OwnedFileReader;

    struct Owned {
        std::uint32_t high = 0;  // halves of the hash
        std::uint32_t low = 0;
        std::uint32_t package = 0;  // index in owners_

        std::uint64_t hash() const { return (std::uint64_t{high} << 32U) | low; }
        auto operator<=>(const Owned&) const = default;
    };

    void load();
    void loadAll();
    void readLinks();
    void readLinksIn(const std::string& directory);
    void noteDirectories();
    std::string withoutKnownLinks(std::string_view directory) const;
    void fail(EventCode code, std::string path, std::string text);

    const Root& root_;
    const Settings& settings_;
    LookupBudget& budget_;
    PackageIndex& packages_;
    bool loaded_ = false;
    bool incomplete_ = false;
    std::vector<Event> events_;
    std::vector<const PackageIndex::Row*> owners_;
    std::deque<Owned> files_;         // sorted by hash; grows without being moved
    std::vector<Owned> directories_;  // whose whole content belongs to one package
    std::vector<std::pair<std::string, std::string>>
        links_;  // to directories, such as /bin, and their targets
};

}  // namespace toolkit::quorvis
