#include "toolkit/machine/packages/PacmanDatabase.h"

#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/text/Checked.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

struct DescField {
    std::string_view heading;
    std::string_view PacmanPackage::*value;
};

constexpr DescField kFields[] = {
    {"%NAME%", &PacmanPackage::name},
    {"%VERSION%", &PacmanPackage::version},
    {"%ARCH%", &PacmanPackage::architecture},
    {"%PACKAGER%", &PacmanPackage::packager},
    {"%DESC%", &PacmanPackage::description},
    {"%BASE%", &PacmanPackage::base},
    {"%INSTALLDATE%", &PacmanPackage::installDate},
    {"%SIZE%", &PacmanPackage::size},
};

std::string_view* valueUnder(std::string_view heading, PacmanPackage& package) {
    for (const DescField& field : kFields) {
        if (field.heading == heading) return &(package.*field.value);
    }
    return nullptr;
}

}  // namespace

PacmanPackage readPacmanDesc(std::string_view text) {
    PacmanPackage package;
    std::string_view* value = nullptr;
    bool heading = true;  // headings follow a blank line; other lines may look like one
    std::string_view line;
    while (nextLine(text, line)) {
        if (heading && !line.empty()) {
            value = valueUnder(line, package);
        } else if (value != nullptr && value->empty()) {
            *value = trimmed(line);
        }
        heading = line.empty();
    }
    return package;
}

namespace {

using Damage = PackageReading::Damage;

PacmanPackage keptTexts(PacmanPackage package, PackageTexts& texts) {
    for (std::string_view* const text :
         {&package.name, &package.version, &package.architecture, &package.packager, &package.description,
          &package.base, &package.installDate, &package.size})
        *text = keepValue(*text, texts);
    return package;
}

InstalledPackage packageOf(const PacmanPackage& pacman, std::string_view database) {
    InstalledPackage package;
    package.type = PackageType::Pacman;
    package.name = pacman.name;
    package.version = pacman.version;
    splitVersion(package);
    package.architecture = pacman.architecture;
    package.source = pacman.base;
    package.maintainer = pacman.packager;
    package.description = pacman.description;
    package.bytes = readCount(pacman.size);
    if (const Count time = readCount(pacman.installDate))
        package.installed = static_cast<std::int64_t>(*time);
    package.database = database;
    return package;
}

PackageReading visitPackages(const Root& root, const std::string& database, PackageTexts& texts,
                             const PackageVisitor& visit) {
    const std::string folder = folderOf(database, "/var/lib/pacman/local/");
    PackageReading result;
    for (const std::string& name : root.list(folder)) {
        if (name == "ALPM_DB_VERSION") continue;
        if (!texts.budget().item()) {
            result.note(Damage::TooLarge, folder);
            break;
        }
        const std::string path = folder + name + "/desc";
        const std::string text = readSmallFile(root, path, texts, result);
        const PacmanPackage pacman = keptTexts(readPacmanDesc(text), texts);
        if (pacman.name.empty()) {
            result.note(Damage::Broken, path);
        } else if (!texts.budget().isSpent()) {
            visit(packageOf(pacman, texts.keep(path)));
        }
    }
    return result;
}

}  // namespace

constinit const PackageDatabase kPacmanDatabase{PackageType::Pacman, "pacman", "alpm", true, visitPackages};

}  // namespace toolkit
