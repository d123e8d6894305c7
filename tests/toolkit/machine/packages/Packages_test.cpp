#include "toolkit/machine/packages/Packages.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"

namespace toolkit {
namespace {

using Damage = PackageReading::Damage;

std::string stanza(const std::string& name, const std::string& version,
                   const std::string& architecture = "all", const std::string& state = "installed") {
    return "Package: " + name + "\nStatus: install ok " + state + "\nArchitecture: " + architecture +
           "\nVersion: " + version + "\n\n";
}

class Packages : public testing::Test {
  protected:
    // "name architecture=all epoch=1 version=2.0 release=3", without the parts that are empty.
    std::vector<std::string> visited(PackageType type, const std::string& database = {}) {
        std::vector<std::string> rows;
        result_ =
            visitPackages(type, Root(tree_.path()), database, texts_, [&](const InstalledPackage& package) {
                EXPECT_EQ(type, package.type);
                databases_.emplace_back(package.database);
                std::string& row = rows.emplace_back(package.name);
                const auto add = [&row](const char* part, std::string_view value) {
                    if (!value.empty()) row.append(" ").append(part).append("=").append(value);
                };
                add("architecture", package.architecture);
                add("epoch", package.epoch);
                add("version", package.upstream);
                add("release", package.release);
            });
        return rows;
    }

    zavtest::ScratchDir tree_;
    PackageTexts texts_;
    PackageReading result_;
    std::vector<std::string> databases_;
};

using Rows = std::vector<std::string>;

TEST_F(Packages, AMissingDatabaseHasNoPackages) {
    for (const PackageType type : kPackageTypes) {
        EXPECT_EQ(Rows(), visited(type)) << nameOf(type);
        EXPECT_EQ(Damage::None, result_.damage) << nameOf(type);
    }
}

TEST_F(Packages, PackageManagersAreKnownByTheFilesThatOnlyTheyMake) {
    const Root root(tree_.path());
    EXPECT_FALSE(hasPackageDatabase(root));
    EXPECT_EQ(std::vector<PackageType>(), packageManagers(root));
    tree_.write("var/lib/dpkg/status.d/base", stanza("base", "1"));
    tree_.write("var/lib/snapd/snap/README", "");
    std::filesystem::create_directories(tree_.path() / "var/lib/rpm");
    EXPECT_TRUE(hasPackageDatabase(root));
    EXPECT_EQ(std::vector<PackageType>(), packageManagers(root)) << "an image that was built without them";
    tree_.write("var/lib/dpkg/status", "");
    tree_.write("usr/lib/sysimage/rpm/rpmdb.sqlite", "");
    tree_.write("var/lib/rpm/Packages", "");
    tree_.write("lib/apk/db/installed", "");
    tree_.write("var/lib/pacman/local/ALPM_DB_VERSION", "9\n");
    EXPECT_EQ((std::vector{PackageType::Dpkg, PackageType::Rpm, PackageType::Apk, PackageType::Pacman}),
              packageManagers(root));
}

TEST_F(Packages, EveryTypeIsFoundByItsName) {
    for (const PackageType type : kPackageTypes) EXPECT_EQ(type, packageTypeNamed(nameOf(type)));
    EXPECT_EQ(std::nullopt, packageTypeNamed("zip"));
}

TEST_F(Packages, VersionsAreSplit) {
    tree_.write("var/lib/dpkg/status",
                stanza("a", "2:1.0-3-4+b1") + stanza("b", "1.0") + stanza("c", "1:2:3"));
    EXPECT_EQ((Rows{"a architecture=all epoch=2 version=1.0-3 release=4+b1", "b architecture=all version=1.0",
                    "c architecture=all epoch=1 version=2:3"}),
              visited(PackageType::Dpkg));
    EXPECT_EQ(Rows(3, "/var/lib/dpkg/status"), databases_);
    tree_.write("lib/apk/db/installed", "P:musl\nV:1.2.4_git1-r2\nA:x86\n\n");
    EXPECT_EQ((Rows{"musl architecture=x86 version=1.2.4_git1 release=r2"}), visited(PackageType::Apk));
    tree_.write("var/lib/pacman/local/z-1/desc", "%NAME%\nz\n\n%VERSION%\n1:1.3-2\n\n%ARCH%\nany\n");
    tree_.write("var/lib/pacman/local/ALPM_DB_VERSION", "9\n");
    EXPECT_EQ((Rows{"z architecture=any epoch=1 version=1.3 release=2"}), visited(PackageType::Pacman));
    EXPECT_EQ("/var/lib/pacman/local/z-1/desc", databases_.back());
    EXPECT_EQ(Damage::None, result_.damage);
}

TEST_F(Packages, DpkgPackagesAreSortedAndTheLastDuplicateCounts) {
    tree_.write("var/lib/dpkg/status", stanza("b", "1") + stanza("a", "1", "i386") +
                                           stanza("a", "1", "amd64") + stanza("b", "2") +
                                           stanza("a", "1", "i386", "half-installed"));
    tree_.write("var/lib/dpkg/status.d/a", "Package: aa\nVersion: 3\n");
    EXPECT_EQ((Rows{"a architecture=amd64 version=1", "aa version=3", "b architecture=all version=2"}),
              visited(PackageType::Dpkg));
}

TEST_F(Packages, DpkgPackagesThatAreOnlyUnpackedAreNotFinished) {
    tree_.write("var/lib/dpkg/status", stanza("a", "1", "all", "unpacked") +
                                           stanza("b", "1", "all", "half-configured") +
                                           stanza("c", "1", "all", "triggers-pending"));
    PackageTexts texts;
    std::string seen;
    visitPackages(PackageType::Dpkg, Root(tree_.path()), {}, texts, [&](const InstalledPackage& package) {
        seen += std::string(package.name) + (package.finished ? " finished;" : " not;");
    });
    EXPECT_EQ("a not;b not;c finished;", seen);
}

TEST_F(Packages, ApkDatabasesAtBothPlacesAreRead) {
    tree_.write("usr/lib/apk/db/installed", "P:new\nV:1-r0\n\n");
    EXPECT_EQ((Rows{"new version=1 release=r0"}), visited(PackageType::Apk));
    tree_.write("lib/apk/db/installed", "P:old\nV:1-r0\n\n");
    EXPECT_EQ((Rows{"old version=1 release=r0", "new version=1 release=r0"}), visited(PackageType::Apk));
}

TEST_F(Packages, AnApkDatabaseThatIsReachedByBothPathsIsReadOnce) {
    tree_.write("usr/lib/apk/db/installed", "P:musl\nV:1-r0\n\n");
    tree_.link("lib", "usr/lib");
    EXPECT_EQ((Rows{"musl version=1 release=r0"}), visited(PackageType::Apk));
}

TEST_F(Packages, AGivenDatabaseReplacesTheDefaultOne) {
    tree_.write("var/lib/dpkg/status", stanza("a", "1"));
    tree_.write("srv/status", stanza("b", "1"));
    EXPECT_EQ((Rows{"b architecture=all version=1"}), visited(PackageType::Dpkg, "/srv/status"));
    EXPECT_EQ(Rows{"/srv/status"}, databases_);
    tree_.write("srv/installed", "P:c\nV:1-r0\n\n");
    EXPECT_EQ((Rows{"c version=1 release=r0"}), visited(PackageType::Apk, "/srv/installed"));
    tree_.write("srv/local/d/desc", "%NAME%\nd\n");
    EXPECT_EQ((Rows{"d"}), visited(PackageType::Pacman, "/srv/local"));
    tree_.write("srv/snaps/e/current/meta/snap.yaml", "name: e\nversion: 5\n");
    EXPECT_EQ((Rows{"e version=5"}), visited(PackageType::Snap, "/srv/snaps/"));
    tree_.write("srv/flatpaks/f/current/active/metadata", "[Application]\nname=f\n");
    EXPECT_EQ((Rows{"f"}), visited(PackageType::Flatpak, "/srv/flatpaks"));
    tree_.write("srv/rpmdb", "no database");
    EXPECT_EQ(Rows(), visited(PackageType::Rpm, "/srv/rpmdb"));
    EXPECT_EQ(Damage::Broken, result_.damage);
    EXPECT_EQ("/srv/rpmdb", result_.path);
    EXPECT_EQ(Rows(), visited(PackageType::Rpm, "/srv/missing"));
    EXPECT_EQ(Damage::None, result_.damage);
}

TEST_F(Packages, ATruncatedFileIsDamagedAtItsEndAndTheRestIsUsed) {
    const std::string whole = stanza("a", "1");
    tree_.write("var/lib/dpkg/status", whole + "Package: b\nStatus: install ok inst");
    EXPECT_EQ((Rows{"a architecture=all version=1"}), visited(PackageType::Dpkg));
    EXPECT_EQ(Damage::Broken, result_.damage);
    EXPECT_EQ("/var/lib/dpkg/status", result_.path);
    EXPECT_EQ(whole.size() + 34, result_.offset);
    tree_.write("lib/apk/db/installed", "P:a\nV:1\n\nP:b\nV");
    EXPECT_EQ((Rows{"a version=1", "b"}), visited(PackageType::Apk));
    EXPECT_EQ(Damage::Broken, result_.damage);
    tree_.write("var/lib/pacman/local/a-1/desc", "%NAME%\na\n");
    tree_.write("var/lib/pacman/local/b-1/files", "%FILES%\n");
    EXPECT_EQ((Rows{"a"}), visited(PackageType::Pacman));
    EXPECT_EQ(Damage::Broken, result_.damage);
    EXPECT_EQ("/var/lib/pacman/local/b-1/desc", result_.path);
}

TEST_F(Packages, PackageUrlsIdentifyThePackage) {
    InstalledPackage package;
    package.name = "a+b";
    package.version = "1:2-3";
    package.epoch = "1";
    package.architecture = "amd64";
    EXPECT_EQ("pkg:deb/debian/a%2Bb@1:2-3?arch=amd64", packageUrl(package, "debian"));
    package.type = PackageType::Rpm;
    EXPECT_EQ("pkg:rpm/fedora/a%2Bb@2-3?arch=amd64&epoch=1", packageUrl(package, "fedora"));
    package = {};
    package.type = PackageType::Flatpak;
    package.name = "org.x.Y";
    package.branch = "stable";
    EXPECT_EQ("pkg:flatpak/org.x.Y?branch=stable", packageUrl(package, "fedora"));
}

}  // namespace
}  // namespace toolkit
