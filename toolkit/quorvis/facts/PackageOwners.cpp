#include "toolkit/quorvis/facts/PackageOwners.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <new>
#include <optional>

#include "toolkit/machine/packages/PackageFiles.h"

namespace toolkit::quorvis {
namespace {

using Row = PackageIndex::Row;

constexpr std::uint64_t kMinLines = 8'000'000;
constexpr std::uint64_t kLinesPerFile = 4;  // lists have further lines, such as those of directories
constexpr std::uint64_t kMaxFiles = std::uint64_t{1} << 40;
constexpr unsigned kPartOfTimeLimit = 8;
constexpr std::chrono::seconds kMinTime{1};

std::uint64_t hashOf(std::string_view text) {
    return std::hash<std::string_view>()(text);
}

std::uint64_t hashOfFile(std::uint64_t directory, std::string_view name) {
    constexpr std::uint64_t kOdd = 0x9E3779B97F4A7C15U;
    const std::uint64_t mixed = (directory ^ (directory >> 29U)) * kOdd + hashOf(name);
    return (mixed ^ (mixed >> 32U)) * kOdd;
}

bool isAbove(std::string_view directory, std::string_view path) {
    return path.starts_with(directory) && (path.size() == directory.size() || path[directory.size()] == '/');
}

}  // namespace

// Adds the files of one type of packages to the index.
class OwnedFileReader : public PackageFileVisitor {
  public:
    OwnedFileReader(PackageOwners& owners, PackageType type) : owners_(owners), type_(type) {}

    bool onPackage(std::string_view name, std::string_view version, std::string_view architecture) override {
        if (full_) return false;
        for (const Row& row : owners_.packages_.named(name)) {
            const bool fits = row.type == type_ && (version.empty() || version == row.version) &&
                              (architecture.empty() || architecture == row.architecture);
            if (!fits) continue;
            package_ = static_cast<std::uint32_t>(owners_.owners_.size());
            owners_.owners_.push_back(&row);
            return true;
        }
        return false;
    }

    void onFile(std::string_view directory, std::string_view name) override {
        if (name.empty()) return;
        full_ = full_ || owners_.files_.size() >= owners_.settings_.packages.maxFiles;
        if (full_) return;
        if (!known_ || directory != directory_) {
            known_ = true;
            directory_ = directory;
            hash_ = hashOf(owners_.withoutKnownLinks(directory));
        }
        const std::uint64_t hash = hashOfFile(hash_, name);
        owners_.files_.push_back(
            {static_cast<std::uint32_t>(hash >> 32U), static_cast<std::uint32_t>(hash), package_});
    }

    bool full() const { return full_; }

  private:
    PackageOwners& owners_;
    PackageType type_;
    std::uint32_t package_ = 0;
    bool full_ = false;
    bool known_ = false;
    std::string directory_;  // the latest one, and its hash
    std::uint64_t hash_ = 0;
};

void PackageOwners::fail(EventCode code, std::string path, std::string text) {
    incomplete_ = true;
    events_.push_back({code, std::move(path), std::move(text), {}, {}});
}

void PackageOwners::load() {
    if (std::exchange(loaded_, true)) return;
    try {
        loadAll();
    } catch (const std::bad_alloc&) {
        files_ = {};
        directories_ = {};
        fail(EventCode::LimitMemory, {}, "the files of packages take more memory than is allowed");
    }
}

void PackageOwners::loadAll() {
    using Clock = LookupBudget::Clock;
    const Clock::duration time = std::max<Clock::duration>(
        Clock::duration(settings_.evaluation.timeLimit) / kPartOfTimeLimit, kMinTime);
    const Clock::time_point end = std::min(budget_.currentDeadline(), Clock::now() + time);
    const LookupBudget::DeadlineScope scope(budget_, end);
    readLinks();
    const std::uint64_t maxFiles = settings_.packages.maxFiles;
    const std::vector<PackageType> types = packages_.types();
    bool full = false;
    for (const PackageType type : types) {
        Allowance allowance;
        allowance.items = std::max(kMinLines, std::min(maxFiles, kMaxFiles) * kLinesPerFile);
        allowance.deadline = end;
        Budget budget(allowance);
        OwnedFileReader reader(*this, type);
        const int denials = root_.denials();
        const PackageReading read = visitPackageFiles(
            type, root_, type == types.front() ? settings_.packages.database : std::string(), budget, reader);
        const std::string files = "files of packages of type " + std::string(nameOf(type));
        if (read.damage != PackageReading::Damage::None)
            fail(codeOf(read.damage), read.path,
                 "the list of " + files + " is " + std::string(describe(read.damage)));
        if (root_.denials() > denials) fail(EventCode::Permission, {}, "no permission to read all " + files);
        full = full || reader.full();
    }
    if (full)
        fail(EventCode::LimitEntries, {},
             "packages have more than " + std::to_string(maxFiles) +
                 " files (Packages/maxFiles): of the others it is unknown which package has them");
    noteDirectories();
    if (packages_.takeDamage(std::nullopt, events_)) incomplete_ = true;
    // Of several packages with the same file the first is kept.
    std::ranges::sort(files_);
}

// The packages that are directories of their own.
void PackageOwners::noteDirectories() {
    for (const Row& row : packages_.all()) {
        const std::string directory = directoryOfPackage(row.type, row.database, row.release);
        if (directory.empty()) continue;
        const std::uint64_t hash = hashOf(withoutKnownLinks(directory));
        directories_.push_back({static_cast<std::uint32_t>(hash >> 32U), static_cast<std::uint32_t>(hash),
                                static_cast<std::uint32_t>(owners_.size())});
        owners_.push_back(&row);
    }
    std::ranges::sort(directories_, {}, &Owned::hash);
}

// Lists may contain /bin/x where the file is /usr/bin/x, and the reverse.
void PackageOwners::readLinks() {
    for (const char* const directory : {"", "/usr", "/var"}) readLinksIn(directory);
}

void PackageOwners::readLinksIn(const std::string& directory) {
    for (const std::string& name : root_.list(directory.empty() ? "/" : directory)) {
        std::string path = directory;
        path.append("/").append(name);
        const std::string target = root_.readLink(path);
        if (target.empty() || !root_.isDirectory(path)) continue;
        // An absolute target replaces the directory.
        const std::filesystem::path whole =
            std::filesystem::path(directory.empty() ? "/" : directory) / target;
        std::string place = whole.lexically_normal().string();
        while (place.ends_with('/')) place.pop_back();
        if (!isAbove(path, place)) links_.emplace_back(std::move(path), std::move(place));
    }
}

std::string PackageOwners::withoutKnownLinks(std::string_view directory) const {
    constexpr int kMaxLinks = 8;
    std::string path(directory);
    for (int i = 0; i < kMaxLinks; ++i) {
        const auto link =
            std::ranges::find_if(links_, [&path](const auto& known) { return isAbove(known.first, path); });
        if (link == links_.end()) break;
        path.replace(0, link->first.size(), link->second);
    }
    return path;
}

const Row* PackageOwners::ownerOf(std::string_view path) {
    load();
    const std::size_t slash = path.rfind('/');
    if (slash == std::string_view::npos) return nullptr;
    const std::uint64_t wanted = hashOfFile(hashOf(path.substr(0, slash)), path.substr(slash + 1));
    const auto file = std::ranges::lower_bound(files_, wanted, {}, &Owned::hash);
    if (file != files_.end() && file->hash() == wanted) return owners_[file->package];
    if (directories_.empty()) return nullptr;
    for (std::string_view above = path; !above.empty(); above = above.substr(0, above.rfind('/'))) {
        const std::uint64_t hash = hashOf(above);
        const auto found = std::ranges::lower_bound(directories_, hash, {}, &Owned::hash);
        if (found != directories_.end() && found->hash() == hash) return owners_[found->package];
    }
    return nullptr;
}

}  // namespace toolkit::quorvis
