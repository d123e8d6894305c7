#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/text/KeyFile.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

using Damage = PackageReading::Damage;

// `deployed` is the target of the link to the version in use, "x86_64/stable". The files do not contain the version number.
InstalledPackage flatpakOf(std::string_view name, std::string_view deployed, const std::string& database,
                           PackageTexts& texts) {
    InstalledPackage package;
    package.type = PackageType::Flatpak;
    package.name = name;
    package.branch = keepValue(deployed, texts);
    package.architecture = takeField(package.branch, '/');
    package.database = texts.keep(database);
    return package;
}

PackageReading visitPackages(const Root& root, const std::string& database, PackageTexts& texts,
                             const PackageVisitor& visit) {
    const std::string folder = folderOf(database, "/var/lib/flatpak/app/");
    PackageReading result;
    for (const std::string& app : root.list(folder)) {
        if (!texts.budget().item()) {
            result.note(Damage::TooLarge, folder);
            break;
        }
        const std::string current = folder + app + "/current";
        const std::string path = current + "/active/metadata";
        const std::string text = readSmallFile(root, path, texts, result);
        const std::string_view name = keyFileValue(text, "Application", "name");
        if (name.empty()) continue;
        const InstalledPackage package =
            flatpakOf(keepValue(name, texts), root.readLink(current), path, texts);
        if (!texts.budget().isSpent()) visit(package);
    }
    return result;
}

}  // namespace

constinit const PackageDatabase kFlatpakDatabase{PackageType::Flatpak, "flatpak", "flatpak", false,
                                                 visitPackages};

}  // namespace toolkit
