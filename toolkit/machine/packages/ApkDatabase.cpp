#include "toolkit/machine/packages/ApkDatabase.h"

#include <fcntl.h>
#include <sys/stat.h>

#include "toolkit/machine/files/ParagraphReader.h"
#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/text/Checked.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

// The field of `package` that a line sets; null for lines about files, checksums and dependencies. The letters are
// case-sensitive: 'M' is the mode of a directory, 'm' the maintainer.
std::string_view* valueOf(char letter, ApkPackage& package) {
    switch (letter) {
        case 'P':
            return &package.name;
        case 'V':
            return &package.version;
        case 'A':
            return &package.architecture;
        case 'm':
            return &package.maintainer;
        case 'T':
            return &package.description;
        case 'o':
            return &package.origin;
        case 'I':
            return &package.installedSize;
        default:
            return nullptr;
    }
}

}  // namespace

bool ApkParser::next(ApkPackage& package) {
    package = {};
    std::string_view line;
    while (nextLine(rest_, line)) {
        if (line.empty()) {
            if (!package.name.empty()) return true;
            package = {};
        } else if (line.size() > 2 && line[1] == ':') {
            std::string_view* const value = valueOf(line[0], package);
            if (value != nullptr && value->empty()) *value = trimmed(line.substr(2));
        }
    }
    if (!package.name.empty()) return true;
    package = {};
    return false;
}

std::vector<std::string> apkDatabases(const Root& root, const std::string& database) {
    if (!database.empty()) return {database};
    std::vector<std::string> files = {"/lib/apk/db/installed"};
    const std::string added = "/usr/lib/apk/db/installed";
    const kest::Descriptor old = root.open(files.front(), O_PATH);
    const kest::Descriptor now = root.open(added, O_PATH);
    struct stat left {};
    struct stat right {};
    const bool same = old.isOpen() && now.isOpen() && ::fstat(old.number(), &left) == 0 &&
                      ::fstat(now.number(), &right) == 0 && left.st_dev == right.st_dev &&
                      left.st_ino == right.st_ino;
    if (!same) files.push_back(added);
    return files;
}

namespace {

using Damage = PackageReading::Damage;

ApkPackage keptTexts(ApkPackage package, PackageTexts& texts) {
    for (std::string_view* const text :
         {&package.name, &package.version, &package.architecture, &package.maintainer, &package.description,
          &package.origin, &package.installedSize})
        *text = keepValue(*text, texts);
    return package;
}

// Databases of old releases do not state the architecture of a package, which is then that of the system.
InstalledPackage packageOf(const ApkPackage& apk, std::string_view database, std::string_view architecture) {
    InstalledPackage package;
    package.type = PackageType::Apk;
    package.name = apk.name;
    package.version = apk.version;
    splitVersion(package);
    package.architecture = apk.architecture.empty() ? architecture : apk.architecture;
    package.source = apk.origin;
    package.maintainer = apk.maintainer;
    package.description = apk.description;
    package.bytes = readCount(apk.installedSize);
    package.database = database;
    return package;
}

void visitFile(const Root& root, const std::string& path, PackageTexts& texts, const PackageVisitor& visit,
               PackageReading& result) {
    ParagraphReader file(root, path, texts.budget());
    if (file.state() == InputFile::State::Unreadable) result.note(Damage::Unreadable, path);
    const std::string_view kept = texts.keep(path);
    const std::string_view architecture = texts.keep(root.readLine("/etc/apk/arch"));
    for (std::string_view text = file.next(); !text.empty(); text = file.next()) {
        ApkParser packages(text);
        ApkPackage apk;
        while (packages.next(apk) && texts.budget().item()) {
            const InstalledPackage package = packageOf(keptTexts(apk, texts), kept, architecture);
            if (!texts.budget().isSpent()) visit(package);
        }
    }
    if (!file.whole()) result.note(Damage::Broken, path, file.damagedAt());
    if (texts.budget().isSpent()) result.note(Damage::TooLarge, path);
}

PackageReading visitPackages(const Root& root, const std::string& database, PackageTexts& texts,
                             const PackageVisitor& visit) {
    PackageReading result;
    for (const std::string& path : apkDatabases(root, database)) visitFile(root, path, texts, visit, result);
    return result;
}

}  // namespace

constinit const PackageDatabase kApkDatabase{PackageType::Apk, "apk", "apk", true, visitPackages};

}  // namespace toolkit
