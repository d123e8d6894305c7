#include "toolkit/machine/packages/PackageFiles.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/machine/packages/RpmHeaderBytes.h"
#include "toolkit/machine/packages/RpmDatabase.h"

namespace toolkit {
namespace {

using Damage = PackageReading::Damage;

// Writes down what is visited: "bash 5.2 amd64: /usr/bin/bash /etc/x; ".
struct Visitor : PackageFileVisitor {
    bool onPackage(std::string_view name, std::string_view version, std::string_view architecture) override {
        text.append(text.empty() ? "" : "; ").append(name).append(" ").append(version).append(" ");
        text.append(architecture).append(":");
        return name != "unwanted";
    }
    void onFile(std::string_view directory, std::string_view name) override {
        text.append(" ").append(directory).append("/").append(name);
    }
    std::string text;
};

class PackageFiles : public testing::Test {
  protected:
    std::string filesOf(PackageType type, const std::string& database = {}) {
        Budget budget(allowance_);
        Visitor visitor;
        reading_ = visitPackageFiles(type, Root(tree_.path()), database, budget, visitor);
        return visitor.text;
    }

    zavtest::ScratchDir tree_;
    Allowance allowance_;
    PackageReading reading_;
};

TEST_F(PackageFiles, OfDpkgAreThePathsOfItsListsWithoutDirectories) {
    tree_.write("var/lib/dpkg/info/bash.list",
                "/.\n/bin\n/bin/bash\n/usr\n/usr/share\n/usr/share/bash x\n/etc\n");
    tree_.write("var/lib/dpkg/info/libc6:amd64.list", "/.\n/lib\n/lib/libc.so.6\n");
    tree_.write("var/lib/dpkg/info/bash.md5sums", "0  nothing\n");
    EXPECT_EQ("bash  : /bin/bash /usr/share/bash x /etc; libc6  amd64: /lib/libc.so.6",
              filesOf(PackageType::Dpkg));
    EXPECT_EQ(Damage::None, reading_.damage);
}

TEST_F(PackageFiles, OfDpkgStandWhereTheyAreDivertedTo) {
    tree_.write("var/lib/dpkg/diversions",
                "/usr/bin/x\n/usr/bin/x.old\nother\n/usr/bin/y\n/usr/bin/y.real\n:\n");
    tree_.write("var/lib/dpkg/info/other.list", "/usr/bin/x\n/usr/bin/y\n");
    tree_.write("var/lib/dpkg/info/own.list", "/usr/bin/x\n");
    EXPECT_EQ("other  : /usr/bin/x /usr/bin/y.real; own  : /usr/bin/x.old", filesOf(PackageType::Dpkg));
}

TEST_F(PackageFiles, OfDpkgAreFoundBesideItsDatabase) {
    tree_.write("srv/dpkg/info/bash.list", "/bin/bash\n");
    EXPECT_EQ("bash  : /bin/bash", filesOf(PackageType::Dpkg, "/srv/dpkg/status"));
}

TEST_F(PackageFiles, OfImagesWithoutDpkgAreThoseOfTheChecksums) {
    tree_.write("var/lib/dpkg/status.d/tzdata.md5sums", "0123  usr/share/zoneinfo/UTC\nnonsense\n");
    EXPECT_EQ("tzdata  : /usr/share/zoneinfo/UTC", filesOf(PackageType::Dpkg));
}

TEST_F(PackageFiles, OfATruncatedListAreItsWholeLines) {
    tree_.write("var/lib/dpkg/info/bash.list", "/bin/bash\n/bin/ba");
    EXPECT_EQ("bash  : /bin/bash", filesOf(PackageType::Dpkg));
    EXPECT_EQ(Damage::Broken, reading_.damage);
    EXPECT_EQ("/var/lib/dpkg/info/bash.list", reading_.path);
    EXPECT_EQ(10U, reading_.offset);
}

TEST_F(PackageFiles, OfApkStandBelowTheirDirectories) {
    tree_.write("lib/apk/db/installed",
                "P:busybox\nV:1.36.1-r2\nA:x86_64\nF:\nR:init\nF:bin\nR:busybox\na:0:0:755\nR:sh\n\n"
                "P:unwanted\nV:1\nF:etc\nR:x\n\nP:musl\nV:1.2\nA:x86_64\nF:lib\nR:ld-musl.so\n\n");
    EXPECT_EQ(
        "busybox 1.36.1-r2 x86_64: /init /bin/busybox /bin/sh; unwanted 1 :; musl 1.2 x86_64: "
        "/lib/ld-musl.so",
        filesOf(PackageType::Apk));
}

TEST_F(PackageFiles, OfPacmanAreTheFilesOfTheirSection) {
    tree_.write("var/lib/pacman/local/ALPM_DB_VERSION", "9\n");
    tree_.write("var/lib/pacman/local/gcc-libs-13.2.1-3/files",
                "%FILES%\nusr/\nusr/lib/\nusr/lib/libgcc_s.so.1\n\n%BACKUP%\netc/x\t0123\n");
    EXPECT_EQ("gcc-libs 13.2.1-3 : /usr/lib/libgcc_s.so.1", filesOf(PackageType::Pacman));
}

TEST_F(PackageFiles, ABudgetThatIsSpentIsReported) {
    tree_.write("var/lib/dpkg/info/bash.list", "/bin/a\n/bin/b\n/bin/c\n");
    allowance_.items = 2;
    EXPECT_EQ("bash  : /bin/a /bin/b", filesOf(PackageType::Dpkg));
    EXPECT_EQ(Damage::TooLarge, reading_.damage);
}

TEST_F(PackageFiles, PackagesThatAreDirectoriesOwnAllBelow) {
    EXPECT_EQ("/snap/core/16",
              directoryOfPackage(PackageType::Snap, "/snap/core/current/meta/snap.yaml", "16"));
    EXPECT_EQ(
        "/var/lib/flatpak/app/org.x",
        directoryOfPackage(PackageType::Flatpak, "/var/lib/flatpak/app/org.x/current/active/metadata", ""));
    EXPECT_EQ("", directoryOfPackage(PackageType::Dpkg, "/var/lib/dpkg/status", "1"));
}

std::string rpmFiles(std::string_view header, bool& whole) {
    std::string files;
    whole = readRpmFiles(header, [&files](std::string_view directory, std::string_view name) {
        files.append(" ").append(directory).append("/").append(name);
    });
    return files;
}

const std::vector<RpmEntry> kRpm = {
    {1000, 6, texts({"bash"})},
    {1029, 1, std::string("\0\0\1\0", 4), 4},
    {1030, 3, number(0100755, 2) + number(0040755, 2) + number(0100644, 2) + number(0100644, 2), 4},
    {1116, 4, number(0, 4) + number(1, 4) + number(1, 4) + number(2, 4), 4},
    {1117, 8, texts({"bash", "skel", "replaced", "init"}), 4},
    {1118, 8, texts({"/usr/bin/", "/etc/", "/"}), 3},
};

TEST(RpmFiles, AreThoseThatAreInstalledWithoutDirectories) {
    bool whole = false;
    EXPECT_EQ(" /usr/bin/bash /init", rpmFiles(rpmHeader(kRpm), whole));
    EXPECT_TRUE(whole);
}

TEST(RpmFiles, AreNamedByTheirOwnTagsAndTypes) {
    bool whole = false;
    std::vector<RpmEntry> entries = kRpm;
    entries.push_back({1047, 8, texts({"bash", "bash(x86-64)"}), 2});
    EXPECT_EQ(" /usr/bin/bash /init", rpmFiles(rpmHeader(entries), whole)) << "what the package provides";
    for (std::size_t i = 3; i < kRpm.size(); ++i) {
        entries = kRpm;
        entries[i].type = 9;
        EXPECT_EQ("", rpmFiles(rpmHeader(entries), whole)) << entries[i].tag;
    }
}

TEST(RpmFiles, AFileWithoutTheEndOfItsNameIsNone) {
    std::vector<RpmEntry> entries = kRpm;
    entries.push_back(entries[4]);
    entries[4].tag = 0;
    entries.back().data.pop_back();
    bool whole = true;
    EXPECT_EQ(" /usr/bin/bash", rpmFiles(rpmHeader(entries), whole));
    EXPECT_FALSE(whole);
}

TEST(RpmFiles, WithoutAModeOrStateAreInstalled) {
    bool whole = false;
    for (const std::size_t i : {1U, 2U}) {
        std::vector<RpmEntry> entries = kRpm;
        entries[i].type = 4;
        EXPECT_EQ(i == 1 ? " /usr/bin/bash /etc/replaced /init" : " /usr/bin/bash /etc/skel /init",
                  rpmFiles(rpmHeader(entries), whole));
        EXPECT_TRUE(whole);
        entries = kRpm;
        entries[i].count = i == 1 ? 2 : 1;
        EXPECT_EQ(i == 1 ? " /usr/bin/bash /etc/replaced /init" : " /usr/bin/bash /etc/skel /init",
                  rpmFiles(rpmHeader(entries), whole));
        EXPECT_TRUE(whole);
    }
}

// What follows a header in memory is not part of it.
TEST(RpmFiles, NumbersEndWithTheHeader) {
    for (const std::size_t last : {1U, 2U, 3U}) {
        std::vector<RpmEntry> entries = kRpm;
        entries.push_back(entries[last]);
        entries[last].tag = 0;
        const std::string bytes = rpmHeader(entries);
        bool whole = false;
        EXPECT_EQ(" /usr/bin/bash /init", rpmFiles(bytes, whole)) << "the numbers are the last ones";
        const std::size_t width = entries.back().data.size() / 4;
        entries.back().data.resize(3 * width);
        const std::string follows = last == 1 ? "\1" : last == 2 ? number(0040755, 2) : number(2, 4);
        std::string cut = rpmHeader(entries);
        const std::size_t size = cut.size();
        cut += follows;
        const std::string files = rpmFiles(std::string_view(cut).substr(0, size), whole);
        EXPECT_EQ(last == 3 ? " /usr/bin/bash" : " /usr/bin/bash /init", files) << last;
        EXPECT_EQ(last != 3, whole);
    }
}

TEST(RpmFiles, OfADamagedHeaderStayWithinIt) {
    bool whole = true;
    std::vector<RpmEntry> entries = kRpm;
    entries[3].data = number(0, 4) + number(1, 4) + number(1, 4) + number(9, 4);
    EXPECT_EQ(" /usr/bin/bash", rpmFiles(rpmHeader(entries), whole));
    EXPECT_FALSE(whole) << "no such directory";
    entries = kRpm;
    entries[3].count = 2;
    EXPECT_EQ(" /usr/bin/bash", rpmFiles(rpmHeader(entries), whole));
    EXPECT_FALSE(whole) << "fewer numbers than names";
    entries[3].count = 0x40000000;
    EXPECT_EQ(" /usr/bin/bash /init", rpmFiles(rpmHeader(entries), whole));
    EXPECT_TRUE(whole) << "more numbers than names";
    const std::string good = rpmHeader(kRpm);
    for (std::size_t length = 0; length < good.size(); ++length) {
        EXPECT_EQ("", rpmFiles(good.substr(0, length), whole));
        EXPECT_FALSE(whole) << length;
    }
}

}  // namespace
}  // namespace toolkit
