#include <optional>
#include <string>

#include "toolkit/machine/ShellVariables.h"
#include "toolkit/quorvah/Group.h"
#include "toolkit/quorvah/PackageSources.h"
#include "toolkit/quorvah/Scan.h"

namespace toolkit::quorvah {
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
    return text ? ShellVariables(*text).value("ID") : std::string();
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

}  // namespace toolkit::quorvah
