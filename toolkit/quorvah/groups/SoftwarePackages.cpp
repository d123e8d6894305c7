#include <fcntl.h>
#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

#include "schema/groups/SoftwarePackages.h"
#include "toolkit/machine/packages/Packages.h"
#include "toolkit/machine/text/IsoTime.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {
namespace {

// The dates on which dpkg installed packages. dpkg writes the list of a package's files when it unpacks the package
// and rarely changes it later.
class DpkgDates {
  public:
    explicit DpkgDates(const Root& root) : folder_(root.open("/var/lib/dpkg/info", O_DIRECTORY)) {}

    std::optional<std::int64_t> of(const InstalledPackage& package) {
        if (!folder_.isOpen() || package.name.find('/') != std::string_view::npos) return {};
        if (package.anyArchitecture) {
            name_.assign(package.name).append(":").append(package.architecture).append(".list");
            if (const auto time = modified()) return time;
        }
        name_.assign(package.name).append(".list");
        return modified();
    }

  private:
    std::optional<std::int64_t> modified() const {
        struct stat status {};
        if (fstatat(folder_.number(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return {};
        return status.st_mtim.tv_sec;
    }

    kest::Descriptor folder_;
    std::string name_;  // the name of a list; a member to reuse its memory
};

// Rounded up.
std::uint64_t kibOf(std::uint64_t bytes) {
    return bytes / 1024 + (bytes % 1024 != 0 ? 1 : 0);
}

class Gatherer {
  public:
    Gatherer(const GatheringContext& context, GroupData& data)
        : context_(context),
          root_(context.root()),
          data_(data),
          distribution_(distributionId(root_)),
          texts_(std::make_shared<PackageTexts>(allowanceOf(context))) {
        data.keep(texts_);
    }

    void gather() {
        for (const PackageType type : kPackageTypes) {
            const PackageReading database = visitPackages(
                type, root_, {}, *texts_, [&](const InstalledPackage& package) { add(package); });
            note(type, database);
        }
        for (const UnreadManager& manager : unreadManagers(root_)) {
            const std::string reason = std::string(manager.name) + "-unsupported";
            data_.partial(reason);
            data_.warn(reason + ": " + std::string(manager.path));
        }
    }

  private:
    static Allowance allowanceOf(const GatheringContext& context) {
        Allowance allowance;
        allowance.deadline = context.root().deadline();
        return allowance;
    }

    void add(const InstalledPackage& package) {
        // Checking the clock takes longer than adding some packages.
        constexpr std::size_t kPackagesPerCheck = 64;
        if (data_.instances().size() % kPackagesPerCheck == 0) context_.checkTime();
        Instance& instance = data_.add(packageUrl(package, distribution_));
        instance.refer("Name", package.name);
        instance.refer("VersionString", package.version);
        instance.refer("Manufacturer", package.maintainer);
        instance.refer("Description", package.description);
        if (const auto time = installed(package)) instance.set("InstallDate", isoTime(*time));
        instance.refer("Architecture", package.architecture);
        instance.refer("Epoch", package.epoch);
        instance.refer("Release", package.release);
        instance.refer("Source", package.source);
        instance.refer("Section", package.section);
        if (package.bytes) {
            instance.set("InstalledSize", kibOf(*package.bytes));
        } else {
            instance.refer("InstalledSize", package.kibibytes);
        }
        instance.refer("Status", package.status);
        instance.refer("PackageFormat", nameOf(package.type));
    }

    std::optional<std::int64_t> installed(const InstalledPackage& package) {
        if (package.type != PackageType::Dpkg) return package.installed;
        if (!dates_) dates_.emplace(root_);
        return dates_->of(package);
    }

    static const char* wordOf(PackageReading::Damage damage) {
        using Damage = PackageReading::Damage;
        switch (damage) {
            case Damage::None:
                return nullptr;
            case Damage::Broken:
                return "-broken";
            case Damage::Unsupported:
                return "-unsupported";
            case Damage::Unsaved:
                return "-unsaved";
            case Damage::Unreadable:
                return "-unreadable";
            case Damage::TooLarge:
                return "-too-large";
            case Damage::OutOfTime:
                return "-timeout";
        }
        return "-broken";
    }

    void note(PackageType type, const PackageReading& database) {
        const char* const word = wordOf(database.damage);
        if (word == nullptr) return;
        const std::string reason = std::string(nameOf(type)) + word;
        data_.partial(reason);
        data_.warn(reason + ": " + database.path);
    }

    const GatheringContext& context_;
    const Root& root_;
    GroupData& data_;
    const std::string distribution_;
    const std::shared_ptr<PackageTexts> texts_;
    std::optional<DpkgDates> dates_;
};

void gather(GatheringContext& context, GroupData& data) {
    Gatherer(context, data).gather();
    // Without any known database, the tree may have packages of another package manager.
    if (data.instances().empty() && !hasPackageDatabase(context.root())) data.notApplicable("no-database");
}

}  // namespace

constexpr Group kSoftwarePackages{.displayName = "Software Packages",
                                  .xmlName = "SoftwarePackages",
                                  .fields = schema::kSoftwarePackages.fields,
                                  .gather = gather,
                                  .readsPlainFilesOnly = true};

}  // namespace toolkit::quorvah
