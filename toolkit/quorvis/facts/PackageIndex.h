#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "toolkit/machine/packages/Packages.h"
#include "toolkit/quorvis/leaves/Leaf.h"

namespace re2 {
class RE2;
}

namespace toolkit::quorvis {

class Machine;

// The installed packages of the machine, found by name. They are read on the first question, from the databases of the
// types that the settings name; the setting "database" says where that of the first of these types lies, of dpkg when
// no type is named.
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

    // Sorted by name, version, architecture and type; `name` is the whole name, an expression may match anywhere in it.
    std::span<const Row> named(std::string_view name, Machine& machine);
    std::vector<const Row*> matching(const re2::RE2& regex, Machine& machine);

    // Tells beforehand that an expression will be asked for, so that many are matched in one pass of the names.
    void announce(std::string_view regex);
    // The packages that an announced expression matches. Null when it is to be matched alone.
    const std::vector<const Row*>* announced(std::string_view regex, Machine& machine);

    // Leaves the result incomplete when packages of this type, or of any, may be missing here. Only the first one who
    // asks is told why. REQUIRES: the packages were asked for.
    void tellDamage(std::optional<PackageType> type, LeafResult& result);

    std::string purl(const Row& row, Machine& machine);

  private:
    struct Damage {
        PackageType type{};
        std::optional<Event> event;  // none when it was told
    };

    void load(Machine& machine);
    void loadAll(Machine& machine);
    void loadType(PackageType type, const std::string& database, const Root& root);
    void matchAnnounced();
    void matchTogether(std::span<const std::string_view> regexes);
    void noteDamage(PackageType type, const PackageDatabase& database);

    bool loaded_ = false;
    PackageTexts texts_;
    std::vector<Row> rows_;
    std::vector<std::string> announced_;  // not yet matched
    std::unordered_map<std::string, std::vector<const Row*>> matches_;
    std::vector<Damage> damages_;
    std::optional<std::string> distribution_;
};

}  // namespace toolkit::quorvis
