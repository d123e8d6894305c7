#include "toolkit/machine/files/ParagraphReader.h"
#include "toolkit/machine/packages/DpkgDatabase.h"
#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/text/Checked.h"

namespace toolkit {
namespace {

using Damage = PackageReading::Damage;

// The status file of OpenWrt and of other systems, and of packages that are added to a device.
constexpr const char* kFiles[] = {"/usr/lib/opkg/status", "/var/lib/opkg/status", "/opt/lib/opkg/status"};

// The file has the form of dpkg's, without the description of the package.
InstalledPackage packageOf(const DpkgStanza& stanza, std::string_view database, PackageTexts& texts) {
    InstalledPackage package;
    package.type = PackageType::Opkg;
    package.name = keepValue(stanza.package, texts);
    package.version = keepValue(stanza.version, texts);
    const DpkgVersion version = splitDpkgVersion(package.version);
    package.epoch = version.epoch;
    package.upstream = version.upstream;
    package.release = version.revision;
    package.architecture = keepValue(stanza.architecture, texts);
    package.source = keepValue(stanza.source, texts);
    package.maintainer = keepValue(stanza.maintainer, texts);
    package.description = keepValue(stanza.description, texts);
    package.section = keepValue(stanza.section, texts);
    package.status = keepValue(stanza.status, texts);
    package.database = database;
    return package;
}

void visitFile(const Root& root, const std::string& path, PackageTexts& texts, const PackageVisitor& visit,
               PackageReading& result) {
    ParagraphReader file(root, path, texts.budget());
    if (file.state() == InputFile::State::Unreadable) result.note(Damage::Unreadable, path);
    const std::string_view database = texts.keep(path);
    for (std::string_view text = file.next(); !text.empty(); text = file.next()) {
        DpkgStatusParser status(text);
        DpkgStanza stanza;
        while (status.next(stanza) && texts.budget().item()) {
            if (!isInstalled(stanza.status)) continue;
            const InstalledPackage package = packageOf(stanza, database, texts);
            if (!texts.budget().isSpent()) visit(package);
        }
    }
    if (!file.whole()) result.note(Damage::Broken, path, file.damagedAt());
    if (texts.budget().isSpent()) result.note(Damage::TooLarge, path);
}

PackageReading visitPackages(const Root& root, const std::string& database, PackageTexts& texts,
                             const PackageVisitor& visit) {
    PackageReading result;
    if (!database.empty()) {
        visitFile(root, database, texts, visit, result);
        return result;
    }
    for (const char* const path : kFiles) {
        if (root.exists(path)) visitFile(root, path, texts, visit, result);
    }
    return result;
}

}  // namespace

constinit const PackageDatabase kOpkgDatabase{PackageType::Opkg, "opkg", "opkg", true, visitPackages};

}  // namespace toolkit
