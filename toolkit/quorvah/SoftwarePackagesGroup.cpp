#include <optional>
#include <string>

#include "toolkit/quorvah/Group.h"
#include "toolkit/quorvah/Lines.h"
#include "toolkit/quorvah/PackageSources.h"
#include "toolkit/quorvah/Scan.h"

namespace quorvah {
namespace {

constexpr FieldDef kFields[] = {
    {"InstanceID"},  {"Name"},          {"VersionString"}, {"Manufacturer"},  {"Description"},
    {"InstallDate"}, {"Architecture"},  {"Epoch"},         {"Release"},       {"Source"},
    {"Section"},     {"InstalledSize"}, {"Status"},        {"PackageFormat"},
};

// The ID of os-release, which stands in package URLs as the name space of the distribution's packages.
std::string distributionId(const Root& root) {
    std::optional<std::string> text = root.read("/etc/os-release");
    if (!text) text = root.read("/usr/lib/os-release");
    if (!text) return {};
    std::string_view rest = *text;
    std::string_view line;
    while (nextLine(rest, line)) {
        if (line.substr(0, 3) != "ID=") continue;
        std::string_view id = trimmed(line.substr(3));
        if (id.size() > 1 && id.front() == id.back() && (id.front() == '"' || id.front() == '\'')) {
            id = id.substr(1, id.size() - 2);
        }
        return std::string(id);
    }
    return {};
}

void gather(Scan& scan, Report& report) {
    const Root& root = scan.root();
    const std::string distribution = distributionId(root);
    addDpkgPackages(root, distribution, report);
    addRpmPackages(root, distribution, report);
    addApkPackages(root, distribution, report);
    addPacmanPackages(root, distribution, report);
    addSnaps(root, report);
    addFlatpaks(root, report);
}

}  // namespace

extern const Group kSoftwarePackages;
constexpr Group kSoftwarePackages{"Software Packages", "SoftwarePackages", kFields, gather};

}  // namespace quorvah
