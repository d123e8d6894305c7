// The packages of trees, and those of this machine compared with its package manager.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/machine/packages/DpkgDatabase.h"
#include "toolkit/machine/text/IsoTime.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

const std::string kStatus = "var/lib/dpkg/status";

std::string stanza(const std::string& name, const std::string& architecture, const std::string& version,
                   const std::string& more = "Status: install ok installed\n") {
    return "Package: " + name + "\nArchitecture: " + architecture + "\nVersion: " + version + "\n" + more +
           "\n";
}

void putWithTime(const ScratchDir& tree, const std::string& path, time_t seconds) {
    tree.write(path, "");
    const timespec times[2] = {{seconds, 0}, {seconds, 0}};
    ASSERT_EQ(0, utimensat(AT_FDCWD, (tree.path() / path).c_str(), times, 0));
}

TEST(DpkgPackages, APackageHasTheFieldsOfItsStanza) {
    const ScratchDir tree;
    tree.write("etc/os-release", "NAME=\"Debian GNU/Linux\"\nVERSION_ID=12\nID=debian\n");
    tree.write(kStatus,
               stanza("bash", "amd64", "2:5.2.15-2+b8",
                      "Status: install ok installed\nMaintainer: A <a@b.org>\nDescription: The shell\n more\n"
                      "Section: shells\nInstalled-Size: 7164\nSource: bash-src (5.2.15-2)\n"));
    putWithTime(tree, "var/lib/dpkg/info/bash.list", 1700000000);
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(data.group(), data.instances().front(),
              {{"InstanceID", "pkg:deb/debian/bash@2:5.2.15-2%2Bb8?arch=amd64"},
               {"Name", "bash"},
               {"VersionString", "2:5.2.15-2+b8"},
               {"Manufacturer", "A <a@b.org>"},
               {"Description", "The shell"},
               {"InstallDate", "2023-11-14T22:13:20Z"},
               {"Architecture", "amd64"},
               {"Epoch", "2"},
               {"Release", "2+b8"},
               {"Source", "bash-src"},
               {"Section", "shells"},
               {"InstalledSize", "7164"},
               {"Status", "install ok installed"},
               {"PackageFormat", "dpkg"}});
}

TEST(DpkgPackages, EveryArchitectureOfANameIsKeptWithItsOwnDate) {
    const ScratchDir tree;
    const std::string same = "Status: install ok installed\nMulti-Arch: same\n";
    tree.write(kStatus, stanza("libc6", "amd64", "2.36-9", same) + stanza("libc6", "i386", "2.36-9", same));
    putWithTime(tree, "var/lib/dpkg/info/libc6:amd64.list", 100);
    putWithTime(tree, "var/lib/dpkg/info/libc6:i386.list", 200);
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    EXPECT_EQ("1970-01-01T00:01:40Z", instanceOf(data, "pkg:deb/libc6@2.36-9?arch=amd64").get("InstallDate"));
    EXPECT_EQ("1970-01-01T00:03:20Z", instanceOf(data, "pkg:deb/libc6@2.36-9?arch=i386").get("InstallDate"));
}

TEST(DpkgPackages, PackagesWhoseFilesAreThereAreListed) {
    const ScratchDir tree;
    tree.write(kStatus,
               stanza("a", "all", "1") + stanza("b", "all", "1", "Status: deinstall ok config-files\n") +
                   stanza("c", "all", "1", "Status: install ok half-installed\n") +
                   stanza("d", "all", "1", "Status: hold ok installed\n") + stanza("e", "all", "1", "") +
                   stanza("f", "all", "1", "Status: install ok unpacked\n") +
                   stanza("g", "all", "1", "Status: install ok half-configured\n"));
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    EXPECT_EQ((std::vector<std::string>{"pkg:deb/a@1?arch=all", "pkg:deb/d@1?arch=all",
                                        "pkg:deb/f@1?arch=all", "pkg:deb/g@1?arch=all"}),
              keysOf(data));
    EXPECT_EQ("install ok unpacked", instanceOf(data, "pkg:deb/f@1?arch=all").get("Status"));
}

TEST(DpkgPackages, TheLastOfRepeatedStanzasApplies) {
    const ScratchDir tree;
    tree.write(kStatus, stanza("b", "all", "1") + stanza("a", "all", "1") + stanza("b", "all", "2") +
                            stanza("a", "all", "1", "Status: deinstall ok config-files\n"));
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    EXPECT_EQ((std::vector<std::string>{"pkg:deb/b@2?arch=all"}), keysOf(data));
}

TEST(DpkgPackages, AnImageWithoutDpkgHasAFileForEachPackage) {
    const ScratchDir tree;
    tree.write("usr/lib/os-release", "ID='debian'\n");
    tree.write("var/lib/dpkg/status.d/base", stanza("base-files", "amd64", "12.4", ""));
    tree.write("var/lib/dpkg/status.d/tzdata", stanza("tzdata", "all", "2024a-0", "Source: tz"));
    tree.write("var/lib/dpkg/status.d/base.md5sums", "0123  ./etc/debian_version\n");
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    EXPECT_EQ((std::vector<std::string>{"pkg:deb/debian/base-files@12.4?arch=amd64",
                                        "pkg:deb/debian/tzdata@2024a-0?arch=all"}),
              keysOf(data));
}

TEST(DpkgPackages, ANameWithASlashGetsNoDate) {
    const ScratchDir tree;
    tree.write(kStatus, stanza("../../../../../../../../etc/group", "all", "1"));
    putWithTime(tree, "etc/group.list", 100);
    std::filesystem::create_directories(tree.path() / "var/lib/dpkg/info");
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    EXPECT_EQ("", data.instances().front().get("InstallDate"));
}

TEST(SmallPackages, EachFormatHasItsInstances) {
    const ScratchDir tree;
    tree.write("etc/os-release", "ID=alpine\n");
    tree.write("lib/apk/db/installed",
               "P:musl\nV:1.2.4-r2\nA:x86_64\nI:634881\nT:libc\no:musl\nm:T <t@x.org>\n\n");
    tree.write(
        "var/lib/pacman/local/zlib-1:1.3-2/desc",
        "%NAME%\nzlib\n\n%VERSION%\n1:1.3-2\n\n%ARCH%\nx86_64\n\n%INSTALLDATE%\n100\n\n%SIZE%\n2048\n");
    tree.write("var/lib/pacman/local/ALPM_DB_VERSION", "9\n");
    tree.write("snap/core20/2015/meta/snap.yaml",
               "name: core20\nversion: '2023'\nsummary: base\narchitectures: [amd64]\n");
    tree.link("snap/core20/current", "2015");
    tree.write("snap/README", "text\n");
    tree.write("var/lib/flatpak/app/org.x.Y/x86_64/stable/abc/metadata",
               "[Application]\nname=org.x.Y\nruntime=r\n");
    tree.link("var/lib/flatpak/app/org.x.Y/x86_64/stable/active", "abc");
    tree.link("var/lib/flatpak/app/org.x.Y/current", "x86_64/stable");
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    EXPECT_EQ("", data.reason());
    ASSERT_EQ(4U, data.instances().size());
    expectAll(data.group(), instanceOf(data, "pkg:apk/alpine/musl@1.2.4-r2?arch=x86_64"),
              {{"InstanceID", "pkg:apk/alpine/musl@1.2.4-r2?arch=x86_64"},
               {"Name", "musl"},
               {"VersionString", "1.2.4-r2"},
               {"Manufacturer", "T <t@x.org>"},
               {"Description", "libc"},
               {"Architecture", "x86_64"},
               {"Release", "r2"},
               {"Source", "musl"},
               {"InstalledSize", "621"},
               {"PackageFormat", "apk"}});
    expectAll(data.group(), instanceOf(data, "pkg:alpm/alpine/zlib@1:1.3-2?arch=x86_64"),
              {{"InstanceID", "pkg:alpm/alpine/zlib@1:1.3-2?arch=x86_64"},
               {"Name", "zlib"},
               {"VersionString", "1:1.3-2"},
               {"InstallDate", "1970-01-01T00:01:40Z"},
               {"Architecture", "x86_64"},
               {"Epoch", "1"},
               {"Release", "2"},
               {"InstalledSize", "2"},
               {"PackageFormat", "pacman"}});
    expectAll(data.group(), instanceOf(data, "pkg:snap/core20@2023?arch=amd64"),
              {{"InstanceID", "pkg:snap/core20@2023?arch=amd64"},
               {"Name", "core20"},
               {"VersionString", "2023"},
               {"Description", "base"},
               {"Architecture", "amd64"},
               {"Release", "2015"},
               {"PackageFormat", "snap"}});
    expectAll(data.group(), instanceOf(data, "pkg:flatpak/org.x.Y?arch=x86_64&branch=stable"),
              {{"InstanceID", "pkg:flatpak/org.x.Y?arch=x86_64&branch=stable"},
               {"Name", "org.x.Y"},
               {"Architecture", "x86_64"},
               {"PackageFormat", "flatpak"}});
}

std::string hexNumber(std::uint32_t value) {
    char text[9];
    std::snprintf(text, sizeof text, "%08x", value);
    return text;
}

// The header of a package with this name, version 1 and release 2 as an SQL literal.
std::string headerLiteral(const std::string& name) {
    std::string store;
    std::string index;
    const std::pair<unsigned, std::string> kTexts[] = {
        {1000, name}, {1001, "1"}, {1002, "2"}, {1022, "noarch"}};
    for (const auto& [tag, text] : kTexts) {
        index += hexNumber(tag) + hexNumber(6) + hexNumber(static_cast<std::uint32_t>(store.size() / 2)) +
                 hexNumber(1);
        for (const char c : text) store += hexNumber(static_cast<unsigned char>(c)).substr(6);
        store += "00";
    }
    return "x'" + hexNumber(4) + hexNumber(static_cast<std::uint32_t>(store.size() / 2)) + index + store +
           "'";
}

void putRpmDatabase(const ScratchDir& tree, const std::string& rows) {
    tree.write("etc/os-release", "ID=\"fedora\"\n");
    std::filesystem::create_directories(tree.path() / "var/lib/rpm");
    tree.write("script",
               "create table Packages(hnum integer primary key autoincrement, blob blob not null);"
               "insert into Packages(blob) values " +
                   rows + ";");
    const std::string root = tree.path().string();
    linesOf("sqlite3 " + root + "/var/lib/rpm/rpmdb.sqlite < " + root + "/script");
}

TEST(RpmPackages, PackagesComeFromTheDatabaseAndKeysDoNotCount) {
    const ScratchDir tree;
    putRpmDatabase(tree, "(" + headerLiteral("bash") + "),(" + headerLiteral("gpg-pubkey") + ")");
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    EXPECT_EQ("", data.reason());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(data.group(), data.instances().front(),
              {{"InstanceID", "pkg:rpm/fedora/bash@1-2?arch=noarch"},
               {"Name", "bash"},
               {"VersionString", "1-2"},
               {"Architecture", "noarch"},
               {"Release", "2"},
               {"PackageFormat", "rpm"}});
}

TEST(RpmPackages, ADamagedHeaderIsSkippedAndReported) {
    const ScratchDir tree;
    putRpmDatabase(tree, "(" + headerLiteral("a") + "),(x'00'),(" + headerLiteral("b") + ")");
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    EXPECT_EQ("rpm-broken", data.reason());
    EXPECT_EQ(2U, data.instances().size());
}

TEST(OpkgPackages, AreListed) {
    const ScratchDir tree;
    tree.write("etc/os-release", "ID=openwrt\n");
    tree.write("usr/lib/opkg/status",
               "Package: busybox\nVersion: 1.36.1-1\nDepends: libc\nStatus: install user installed\n"
               "Architecture: mips_24kc\nInstalled-Time: 1700000000\n\n"
               "Package: gone\nVersion: 1\nStatus: deinstall user not-installed\nArchitecture: all\n\n");
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    ASSERT_EQ((std::vector<std::string>{"pkg:opkg/openwrt/busybox@1.36.1-1?arch=mips_24kc"}), keysOf(data));
    EXPECT_EQ("opkg", data.instances().front().get("PackageFormat"));
    EXPECT_EQ("install user installed", data.instances().front().get("Status"));
    EXPECT_EQ("1", data.instances().front().get("Release"));
}

TEST(PortagePackages, AreListed) {
    const ScratchDir tree;
    const std::string folder = "var/db/pkg/sys-apps/";
    tree.write(folder + "util-linux-2.39.3-r2/DESCRIPTION", "Various useful Linux utilities\n");
    tree.write(folder + "util-linux-2.39.3-r2/SIZE", "20480\n");
    tree.write(folder + "util-linux-2.39.3-r2/BUILD_TIME", "1700000000\n");
    tree.write(folder + "-MERGING-grep-3.11/SIZE", "1\n");
    tree.write(folder + "no-version/SIZE", "1\n");
    tree.write(folder + "lsb-release-4a-3.3/SIZE", "1\n");
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    ASSERT_EQ(2U, data.instances().size());
    const Instance& package = instanceOf(data, "pkg:ebuild/sys-apps/util-linux@2.39.3-r2");
    EXPECT_EQ("sys-apps/util-linux", package.get("Name"));
    EXPECT_EQ("2.39.3-r2", package.get("VersionString"));
    EXPECT_EQ("Various useful Linux utilities", package.get("Description"));
    EXPECT_EQ("20", package.get("InstalledSize"));
    EXPECT_EQ("2023-11-14T22:13:20Z", package.get("InstallDate"));
}

TEST(HomebrewPackages, AreListed) {
    const ScratchDir tree;
    const std::string cellar = "home/linuxbrew/.linuxbrew/Cellar/";
    tree.write(cellar + "jq/1.7.1/INSTALL_RECEIPT.json", "{}");
    tree.write(cellar + "jq/1.8/bin/jq", "");
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    EXPECT_EQ((std::vector<std::string>{"pkg:brew/jq@1.7.1"}), keysOf(data));
}

TEST(OtherPackageManagers, ThatAreNotReadAreReported) {
    const std::pair<const char*, const char*> kCases[] = {
        {"nix/var/nix/profiles/system-1-link", "nix-unsupported"},
        {"var/guix/profiles/system-1-link", "guix-unsupported"},
    };
    for (const auto& [file, reason] : kCases) {
        const ScratchDir tree;
        tree.write(file, "");
        const GroupData unread = gatheredBelow(kSoftwarePackages, tree.path());
        EXPECT_EQ(GroupState::Unread, unread.state()) << file;
        EXPECT_EQ(reason, unread.reason());
        tree.write(kStatus, stanza("a", "all", "1"));
        const GroupData partial = gatheredBelow(kSoftwarePackages, tree.path());
        EXPECT_EQ(GroupState::Partial, partial.state()) << file;
        EXPECT_EQ(1U, partial.instances().size());
    }
}

TEST(RpmPackages, UnreadableDatabasesAreReported) {
    const struct {
        const char* path;
        const char* content;
        const char* reason;
    } kCases[] = {
        {"var/lib/rpm/Packages", "\0\1", "rpm-unsupported"},
        {"var/lib/rpm/Packages.db", "RpmP", "rpm-unsupported"},
        {"usr/lib/sysimage/rpm/Packages.db", "RpmP", "rpm-unsupported"},
        {"var/lib/rpm/rpmdb.sqlite", "no database", "rpm-broken"},
    };
    for (const auto& test : kCases) {
        const ScratchDir tree;
        tree.write(test.path, test.content);
        const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
        EXPECT_EQ(test.reason, data.reason()) << test.path;
        EXPECT_TRUE(data.instances().empty()) << test.path;
    }
}

TEST(RpmPackages, ChangesThatAreNotInTheDatabaseYetAreReported) {
    const ScratchDir tree;
    putRpmDatabase(tree, "(" + headerLiteral("a") + ")");
    tree.write("var/lib/rpm/rpmdb.sqlite-wal", "log");
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    EXPECT_EQ("rpm-unsaved", data.reason());
    EXPECT_EQ(1U, data.instances().size());
}

std::vector<std::string> dpkgQuery() {
    std::vector<std::string> rows;
    for (const std::string& line : linesOf(
             "dpkg-query -W -f '${Status}\\t${Package}\\t${Version}\\t${Architecture}\\t${source:Package}\\t"
             "${Section}\\t${Installed-Size}\\t${binary:Synopsis}\\t${Maintainer}\\t${db-fsys:Last-Modified}"
             "\\n'")) {
        std::vector<std::string> fields = fieldsOf(line);
        if (fields.size() != 10 || (!isInstalled(fields[0]) && !isUnfinished(fields[0]))) continue;
        fields[9] = isoTime(std::stoll(fields[9]));
        std::string row;
        for (std::string& field : fields) {
            field.resize(field.find_last_not_of(' ') + 1);  // some descriptions end with a blank
            row += field + "|";
        }
        rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

std::vector<std::string> ourRows(const GroupData& data) {
    std::vector<std::string> rows;
    for (const Instance& package : data.instances()) {
        if (package.get("PackageFormat") != "dpkg") continue;
        std::string row;
        for (const char* const field :
             {"Status", "Name", "VersionString", "Architecture", "Source", "Section", "InstalledSize",
              "Description", "Manufacturer", "InstallDate"}) {
            row += package.get(field) + "|";
        }
        rows.push_back(row);
    }
    std::sort(rows.begin(), rows.end());
    return rows;
}

TEST(DpkgPackagesLive, EveryPackageMatchesDpkgQuery) {
    const std::vector<std::string> theirs = dpkgQuery();
    const std::vector<std::string> ours = ourRows(gatheredLive(kSoftwarePackages));
    EXPECT_FALSE(theirs.empty());
    EXPECT_EQ(theirs.size(), ours.size());
    for (std::size_t i = 0; i < std::min(theirs.size(), ours.size()); ++i) EXPECT_EQ(theirs[i], ours[i]);
}

TEST(DpkgPackagesLive, TheSameFilesAsATreeGiveTheSamePackages) {
    const GroupData live = gatheredLive(kSoftwarePackages);
    const GroupData tree = gatheredBelow(kSoftwarePackages, "/");
    EXPECT_EQ(keysOf(live), keysOf(tree));
    EXPECT_EQ(ourRows(live), ourRows(tree));
}

TEST(ApkPackages, WithoutAnArchitectureHaveThatOfTheSystem) {
    const ScratchDir tree;
    tree.write("etc/apk/arch", "aarch64\n");
    tree.write("lib/apk/db/installed", "P:musl\nV:1.1.5-r4\n\nP:tzdata\nV:2014j-r0\nA:noarch\n\n");
    const GroupData data = gatheredBelow(kSoftwarePackages, tree.path());
    ASSERT_EQ(data.instances().size(), 2U);
    EXPECT_EQ(data.instances()[0].get("Architecture"), "aarch64");
    EXPECT_EQ(data.instances()[1].get("Architecture"), "noarch");
}

}  // namespace
}  // namespace toolkit::quorvah
