#include <string>

#include "toolkit/machine/packages/PackageDatabase.h"

namespace toolkit {
namespace {

using Damage = PackageReading::Damage;

constexpr const char* kCellars[] = {"/home/linuxbrew/.linuxbrew/Cellar/", "/opt/homebrew/Cellar/"};

// A folder per package, with a folder per installed version.
void visitCellar(const Root& root, const std::string& folder, PackageTexts& texts,
                 const PackageVisitor& visit, PackageReading& result) {
    for (const std::string& name : root.list(folder)) {
        const std::string versions = folder + name + "/";
        for (const std::string& version : root.list(versions)) {
            // A version is being installed while its receipt is missing.
            const std::string path = versions + version;
            if (!root.exists(path + "/INSTALL_RECEIPT.json")) continue;
            if (!texts.budget().item()) {
                result.note(Damage::TooLarge, folder);
                return;
            }
            InstalledPackage package;
            package.type = PackageType::Homebrew;
            package.name = keepValue(name, texts);
            package.version = keepValue(version, texts);
            package.upstream = package.version;
            package.database = texts.keep(path);
            if (!texts.budget().isSpent()) visit(package);
        }
    }
}

PackageReading visitPackages(const Root& root, const std::string& database, PackageTexts& texts,
                             const PackageVisitor& visit) {
    PackageReading result;
    if (!database.empty()) {
        visitCellar(root, folderOf(database, ""), texts, visit, result);
        return result;
    }
    for (const char* const cellar : kCellars) visitCellar(root, cellar, texts, visit, result);
    return result;
}

}  // namespace

constinit const PackageDatabase kHomebrewDatabase{PackageType::Homebrew, "homebrew", "brew", false,
                                                  visitPackages};

}  // namespace toolkit
