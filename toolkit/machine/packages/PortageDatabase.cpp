#include <string>

#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/text/Checked.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

using Damage = PackageReading::Damage;

// Where the version begins in "NAME-VERSION": at the last dash before a digit that is not the one of the revision "-r1".
std::size_t versionIn(std::string_view entry) {
    std::size_t dash = entry.rfind('-');
    const bool revision = dash != std::string_view::npos && entry.substr(dash).starts_with("-r") &&
                          readCount(entry.substr(dash + 2)).has_value();
    if (revision && dash > 0) dash = entry.rfind('-', dash - 1);
    const bool valid = dash != std::string_view::npos && dash > 0 && dash + 1 < entry.size() &&
                       entry[dash + 1] >= '0' && entry[dash + 1] <= '9';
    return valid ? dash + 1 : std::string_view::npos;
}

// The single line of a file of the package.
std::string_view lineOf(const Root& root, const std::string& path, PackageTexts& texts,
                        PackageReading& result) {
    return keepValue(trimmed(readSmallFile(root, path, texts, result)), texts);
}

// A folder per package, CATEGORY/NAME-VERSION, with a small file per value.
PackageReading visitPackages(const Root& root, const std::string& database, PackageTexts& texts,
                             const PackageVisitor& visit) {
    const std::string folder = folderOf(database, "/var/db/pkg/");
    PackageReading result;
    for (const std::string& category : root.list(folder)) {
        const std::string entries = folder + category + "/";
        for (const std::string& entry : root.list(entries)) {
            const std::size_t version = versionIn(entry);
            // An entry that is being made or removed begins with "-MERGING-".
            if (version == std::string_view::npos || entry.front() == '-') continue;
            if (!texts.budget().item()) {
                result.note(Damage::TooLarge, folder);
                return result;
            }
            const std::string path = entries + entry + "/";
            InstalledPackage package;
            package.type = PackageType::Portage;
            package.name = texts.keep({category, "/", std::string_view(entry).substr(0, version - 1)});
            package.version = texts.keep(std::string_view(entry).substr(version));
            package.upstream = package.version;
            package.description = lineOf(root, path + "DESCRIPTION", texts, result);
            package.section = texts.keep(category);
            package.bytes = readCount(lineOf(root, path + "SIZE", texts, result));
            if (const Count built = readCount(lineOf(root, path + "BUILD_TIME", texts, result)))
                package.installed = static_cast<std::int64_t>(*built);
            package.database = texts.keep(path);
            if (!texts.budget().isSpent()) visit(package);
        }
    }
    return result;
}

}  // namespace

constinit const PackageDatabase kPortageDatabase{PackageType::Portage, "portage", "ebuild", false,
                                                 visitPackages};

}  // namespace toolkit
