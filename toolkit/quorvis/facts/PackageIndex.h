#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/machine/packages/Packages.h"
#include "toolkit/quorvis/files/LookupBudget.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace re2 {
class RE2;
}

namespace toolkit::quorvis {

// "damaged", and the code of the event that reports it.
std::string_view describe(PackageReading::Damage damage);
EventCode codeOf(PackageReading::Damage damage);

// The installed packages, found by name. They are read on the first lookup, from the databases of the types that the
// settings name. The setting "database" gives the place of the first type's database, of dpkg's when no type is named.
class PackageIndex {
  public:
    struct Row {
        PackageType type{};
        std::string_view name;
        std::string_view version;
        std::string_view epoch;
        std::string_view upstream;
        std::string_view release;
        std::string_view architecture;
        std::string_view source;
        std::string_view branch;
        std::string_view database;
    };

    // REQUIRES: all arguments outlive this.
    PackageIndex(const Root& root, const Settings::Packages& settings, const LookupBudget& budget)
        : root_(root), settings_(settings), budget_(budget) {}

    // The types of packages that are read.
    std::vector<PackageType> types() const;
    // All packages, sorted by name, version, architecture and type.
    std::span<const Row> all();
    // The packages with exactly this name, sorted by version, architecture and type.
    std::span<const Row> named(std::string_view name);
    // The packages whose names the regex matches anywhere, sorted by name, version, architecture and type.
    std::vector<const Row*> matching(const re2::RE2& regex);

    // Says that a regex will be used, so that many are matched in one pass over the names.
    void announce(std::string_view regex);
    // The packages that an announced regex matches. Null when matching() must be used for this regex.
    const std::vector<const Row*>* announced(std::string_view regex);

    // Whether packages of this type, or of any without one, may be missing. The first call that finds it so appends the
    // reason to the events. REQUIRES: packages have been looked up.
    bool takeDamage(std::optional<PackageType> type, std::vector<Event>& events);

    std::string purl(const Row& row);

  private:
    struct Damage {
        PackageType type{};
        std::optional<Event> event;  // none when it has been taken
    };

    void load();
    void loadAll();
    void loadType(PackageType type, const std::string& database);
    void matchAnnounced();
    void matchTogether(std::span<const std::string_view> regexes);
    void noteDamage(PackageType type, const PackageReading& database);

    const Root& root_;
    const Settings::Packages& settings_;
    const LookupBudget& budget_;
    bool loaded_ = false;
    PackageTexts texts_;
    std::vector<Row> rows_;
    std::vector<std::string> announced_;  // not yet matched
    std::unordered_map<std::string, std::vector<const Row*>> matches_;
    std::vector<Damage> damages_;
    std::optional<std::string> distribution_;
};

}  // namespace toolkit::quorvis
