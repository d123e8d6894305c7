#include "toolkit/quorvis/facts/PackageIndex.h"

#include <re2/re2.h>

#include <algorithm>
#include <new>
#include <tuple>
#include <utility>

#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {
namespace {

using Row = PackageIndex::Row;

bool before(const Row& left, const Row& right) {
    return std::tie(left.name, left.version, left.architecture, left.type) <
           std::tie(right.name, right.version, right.architecture, right.type);
}

bool isPlain(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

// The prefix of all names that the regex matches: the plain characters after a "^". Empty when the regex has
// alternatives.
std::string requiredPrefix(std::string_view pattern) {
    std::string prefix;
    if (!pattern.starts_with('^') || pattern.find('|') != std::string_view::npos) return prefix;
    for (std::size_t i = 1; i < pattern.size(); ++i) {
        const bool escaped = pattern.substr(i).starts_with("\\.") || pattern.substr(i).starts_with("\\+");
        if (escaped) ++i;
        if (!escaped && !isPlain(pattern[i])) {
            // An optional character is not required.
            if (!prefix.empty() && std::string_view("*?{").find(pattern[i]) != std::string_view::npos)
                prefix.pop_back();
            break;
        }
        prefix += pattern[i];
    }
    return prefix;
}

}  // namespace

std::string_view describe(PackageReading::Damage damage) {
    using Damage = PackageReading::Damage;
    switch (damage) {
        case Damage::Unsupported:
            return "of a kind that cannot be read";
        case Damage::Unsaved:
            return "beside a log with changes that are not read";
        case Damage::Unreadable:
            return "no file that can be read";
        case Damage::TooLarge:
            return "larger than what is read of one";
        case Damage::OutOfTime:
            return "read only in part, for the time is over";
        default:
            return "damaged";
    }
}

EventCode codeOf(PackageReading::Damage damage) {
    using Damage = PackageReading::Damage;
    switch (damage) {
        case Damage::Unreadable:
            return EventCode::Io;
        case Damage::TooLarge:
            return EventCode::LimitBytes;
        case Damage::OutOfTime:
            return EventCode::Deadline;
        default:
            return EventCode::Parse;
    }
}

std::vector<PackageType> PackageIndex::types() const {
    std::vector<PackageType> types;
    for (const std::string& name : settings_.types) {
        if (const auto type = packageTypeNamed(name)) types.push_back(*type);
    }
    if (types.empty()) types.assign(kPackageTypes.begin(), kPackageTypes.end());
    return types;
}

std::span<const Row> PackageIndex::all() {
    load();
    return rows_;
}

void PackageIndex::load() {
    if (std::exchange(loaded_, true)) return;
    try {
        loadAll();
    } catch (const std::bad_alloc&) {
        rows_ = {};
        for (const PackageType type : kPackageTypes) {
            damages_.push_back(
                {type,
                 Event{EventCode::LimitMemory, {}, "the packages take more memory than is allowed", {}, {}}});
        }
    }
}

void PackageIndex::loadAll() {
    texts_.endAt(budget_.currentDeadline());
    const std::vector<PackageType> wanted = types();
    for (const PackageType type : wanted) {
        const bool first = type == wanted.front();
        loadType(type, first ? settings_.database : std::string());
    }
    if (!std::ranges::is_sorted(rows_, before)) std::ranges::sort(rows_, before);
}

void PackageIndex::loadType(PackageType type, const std::string& database) {
    const int denials = root_.denials();
    const PackageReading read =
        visitPackages(type, root_, database, texts_, [this](const InstalledPackage& package) {
            if (!package.finished) return;
            rows_.push_back({package.type, package.name, package.version, package.epoch, package.upstream,
                             package.release, package.architecture, package.source, package.branch,
                             package.database});
        });
    if (root_.denials() > denials) {
        damages_.push_back(
            {type, Event{EventCode::Permission,
                         database,
                         "no permission to read all packages of type " + std::string(nameOf(type)),
                         {},
                         {}}});
    }
    if (read.damage != PackageReading::Damage::None) noteDamage(type, read);
}

void PackageIndex::noteDamage(PackageType type, const PackageReading& database) {
    std::string text = "the package database is ";
    text += describe(database.damage);
    if (database.offset != 0) text += " from byte " + std::to_string(database.offset) + " on";
    damages_.push_back({type, Event{codeOf(database.damage), database.path, std::move(text), {}, {}}});
}

std::span<const Row> PackageIndex::named(std::string_view name) {
    load();
    const auto first = std::ranges::lower_bound(rows_, name, {}, &Row::name);
    auto end = first;
    while (end != rows_.end() && end->name == name) ++end;
    return {first, end};
}

std::vector<const Row*> PackageIndex::matching(const re2::RE2& regex) {
    load();
    const std::string prefix = requiredPrefix(regex.pattern());
    const auto startOf = [&](const Row& row) { return row.name.substr(0, prefix.size()); };
    std::vector<const Row*> rows;
    const auto end = std::ranges::upper_bound(rows_, prefix, std::ranges::less(), startOf);
    for (auto row = std::ranges::lower_bound(rows_, prefix, std::ranges::less(), startOf); row != end;
         ++row) {
        if (RE2::PartialMatch({row->name.data(), row->name.size()}, regex)) rows.push_back(&*row);
    }
    return rows;
}

void PackageIndex::announce(std::string_view regex) {
    // The few other regexes are matched one by one.
    const std::optional<int> groups = groupsOfPlainRegex(regex);
    if (groups && *groups <= kMaxGroups) announced_.emplace_back(regex);
}

const std::vector<const Row*>* PackageIndex::announced(std::string_view regex) {
    load();
    if (!announced_.empty()) matchAnnounced();
    const auto found = matches_.find(std::string(regex));
    return found == matches_.end() ? nullptr : &found->second;
}

void PackageIndex::matchAnnounced() {
    const std::vector<std::string> announced = std::exchange(announced_, {});
    std::vector<std::string_view> regexes(announced.begin(), announced.end());
    std::ranges::sort(regexes);
    regexes.erase(std::unique(regexes.begin(), regexes.end()), regexes.end());
    if (regexes.size() < RegexSet::kMin) return;
    for (std::span<const std::string_view> rest = regexes; !rest.empty();) {
        const std::size_t count = std::min(rest.size(), RegexSet::kMax);
        matchTogether(rest.first(count));
        rest = rest.subspan(count);
    }
}

void PackageIndex::matchTogether(std::span<const std::string_view> regexes) {
    const RegexSet set(regexes, RE2::Options::EncodingLatin1);
    std::vector<std::vector<const Row*>> matches(regexes.size());
    for (const Row& row : rows_) {
        const std::optional<std::vector<int>> hits = set.matching(row.name);
        if (!hits) return;
        for (const int hit : *hits) matches[static_cast<std::size_t>(hit)].push_back(&row);
    }
    for (std::size_t i = 0; i < regexes.size(); ++i) matches_.emplace(regexes[i], std::move(matches[i]));
}

bool PackageIndex::takeDamage(std::optional<PackageType> type, std::vector<Event>& events) {
    bool damaged = false;
    for (Damage& damage : damages_) {
        if (type && *type != damage.type) continue;
        damaged = true;
        if (damage.event) events.push_back(std::move(*damage.event));
        damage.event.reset();
    }
    return damaged;
}

std::string PackageIndex::purl(const Row& row) {
    if (!distribution_) distribution_ = distributionId(root_);
    InstalledPackage package;
    package.type = row.type;
    package.name = row.name;
    package.version = row.version;
    package.epoch = row.epoch;
    package.architecture = row.architecture;
    package.branch = row.branch;
    return packageUrl(package, *distribution_);
}

}  // namespace toolkit::quorvis
