// Package databases that were made to exhaust memory or time, or that cannot be read.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/machine/packages/Packages.h"

namespace toolkit {
namespace {

namespace fs = std::filesystem;
using Damage = PackageReading::Damage;
using Names = std::vector<std::string>;

std::string stanza(const std::string& name, const std::string& more = {}) {
    return "Package: " + name + "\nStatus: install ok installed\nArchitecture: all\nVersion: 1\n" + more +
           "\n";
}

class HostilePackages : public testing::Test {
  protected:
    Names visited(PackageType type, const Allowance& allowance = {}) {
        Names names;
        PackageTexts texts(allowance);
        kept_ = 0;
        result_ = visitPackages(type, Root(tree_.path()), {}, texts, [&](const InstalledPackage& package) {
            names.emplace_back(package.name);
            for (const std::string_view text : {package.name, package.version, package.description})
                kept_ += text.size();
            descriptions_.emplace_back(package.description);
        });
        return names;
    }

    // A sparse file of one tebibyte.
    void writeSparse(const std::string& name, const std::string& start) const {
        fs::resize_file(tree_.write(name, start), std::uintmax_t{1} << 40);
    }

    zavtest::ScratchDir tree_;
    PackageReading result_;
    std::vector<std::string> descriptions_;
    std::size_t kept_ = 0;
};

const char* const kDatabases[] = {"var/lib/dpkg/status", "var/lib/rpm/rpmdb.sqlite", "lib/apk/db/installed"};
constexpr PackageType kTypes[] = {PackageType::Dpkg, PackageType::Rpm, PackageType::Apk};

TEST_F(HostilePackages, AnOverlongFieldIsUnknownAndTheRestIsRead) {
    tree_.write("var/lib/dpkg/status",
                stanza("a") + stanza("b", "Description: " + std::string(5000, 'A') + "\n") + stanza("c"));
    EXPECT_EQ((Names{"a", "b", "c"}), visited(PackageType::Dpkg));
    EXPECT_EQ((Names{"", "", ""}), descriptions_);
    EXPECT_EQ(Damage::None, result_.damage);
}

TEST_F(HostilePackages, APackageWithAnOverlongNameIsDamageAndTheRestIsRead) {
    const std::string longName(5000, 'A');
    tree_.write("var/lib/dpkg/status", stanza("a") + stanza(longName) + stanza("c"));
    tree_.write("lib/apk/db/installed", "P:a\nV:1\n\nP:b\nV:" + longName + "\n\nP:c\nV:1\n\n");
    tree_.write("var/lib/pacman/local/a/desc", "%NAME%\na\n");
    tree_.write("var/lib/pacman/local/b/desc", "%NAME%\n" + longName + "\n");
    tree_.write("var/lib/pacman/local/c/desc", "%NAME%\nc\n");
    tree_.write("snap/a/current/meta/snap.yaml", "name: a\n");
    tree_.write("snap/b/current/meta/snap.yaml", "name: " + longName + "\n");
    tree_.write("snap/c/current/meta/snap.yaml", "name: c\n");
    for (const char* const app : {"a", "b", "c"}) {
        tree_.write(std::string("var/lib/flatpak/app/") + app + "/current/active/metadata",
                    "[Application]\nname=" + (*app == 'b' ? longName : app) + "\n");
    }
    for (const PackageType type : {PackageType::Dpkg, PackageType::Apk, PackageType::Pacman,
                                   PackageType::Snap, PackageType::Flatpak}) {
        EXPECT_EQ((Names{"a", "c"}), visited(type)) << nameOf(type);
        EXPECT_EQ(Damage::Broken, result_.damage) << nameOf(type);
    }
}

TEST_F(HostilePackages, AnOverlongParagraphIsSkipped) {
    const std::string start = stanza("a");
    tree_.write("var/lib/dpkg/status",
                start + stanza("b", "Description: " + std::string(40 << 20, 'A') + "\n") + stanza("c"));
    EXPECT_EQ((Names{"a", "c"}), visited(PackageType::Dpkg));
    EXPECT_EQ(Damage::Broken, result_.damage);
    EXPECT_EQ(start.size(), result_.offset);
}

TEST_F(HostilePackages, ParagraphsAcrossTheBufferEndAreWhole) {
    // Longer and shorter than the buffer, with line ends at every distance from its end.
    std::string text;
    Names names;
    for (int i = 0; i < 700; ++i) {
        char name[16];
        std::snprintf(name, sizeof name, "p%04d", i);
        names.emplace_back(name);
        text += stanza(name, "Description: d\n" + std::string(static_cast<std::size_t>(i) * 3, ' ') + "x\n");
    }
    text += stanza("q", "Conffiles: " + std::string(300'000, 'c') + "\n");
    names.emplace_back("q");
    tree_.write("var/lib/dpkg/status", text);
    EXPECT_EQ(names, visited(PackageType::Dpkg));
    EXPECT_EQ(Damage::None, result_.damage);
}

TEST_F(HostilePackages, ASparseFileOfATebibyteIsReadInPartAndReported) {
    Allowance allowance;
    allowance.bytesRead = std::uint64_t{64} << 20;
    writeSparse("var/lib/dpkg/status", stanza("a"));
    writeSparse("lib/apk/db/installed", "P:a\nV:1\n\n");
    for (const PackageType type : {PackageType::Dpkg, PackageType::Apk}) {
        EXPECT_EQ(Names{"a"}, visited(type, allowance)) << nameOf(type);
        EXPECT_EQ(Damage::TooLarge, result_.damage) << nameOf(type);
    }
    writeSparse("var/lib/pacman/local/a/desc", "%NAME%\na\n");
    writeSparse("snap/a/current/meta/snap.yaml", "name: a\n");
    writeSparse("var/lib/flatpak/app/a/current/active/metadata", "[Application]\nname=a\n");
    for (const PackageType type : {PackageType::Pacman, PackageType::Snap, PackageType::Flatpak}) {
        EXPECT_EQ(Names(), visited(type, allowance)) << nameOf(type);
        EXPECT_EQ(Damage::Broken, result_.damage) << nameOf(type);
    }
}

TEST_F(HostilePackages, PackagesBeyondTheAllowanceAreNotRead) {
    Allowance allowance;
    allowance.items = 3;
    for (const char* const name : {"a", "b", "c", "d", "e"}) {
        std::ofstream(tree_.write("var/lib/dpkg/x", "").parent_path() / "status", std::ios::app)
            << stanza(name);
        std::ofstream(tree_.write("lib/apk/db/x", "").parent_path() / "installed", std::ios::app)
            << "P:" << name << "\nV:1\n\n";
        tree_.write(std::string("var/lib/pacman/local/") + name + "/desc", std::string("%NAME%\n") + name);
        tree_.write(std::string("snap/") + name + "/current/meta/snap.yaml", std::string("name: ") + name);
        tree_.write(std::string("var/lib/flatpak/app/") + name + "/current/active/metadata",
                    std::string("[Application]\nname=") + name);
    }
    for (const PackageType type : {PackageType::Dpkg, PackageType::Apk, PackageType::Pacman,
                                   PackageType::Snap, PackageType::Flatpak}) {
        EXPECT_EQ((Names{"a", "b", "c"}), visited(type, allowance)) << nameOf(type);
        EXPECT_EQ(Damage::TooLarge, result_.damage) << nameOf(type);
    }
}

TEST_F(HostilePackages, TextsBeyondTheAllowanceAreNotKept) {
    std::string text;
    for (int i = 0; i < 5000; ++i)
        text += stanza("p" + std::to_string(i), "Description: " + std::string(4000, 'A') + "\n");
    tree_.write("var/lib/dpkg/status", text);
    Allowance allowance;
    allowance.bytesKept = 1 << 20;
    EXPECT_GT(visited(PackageType::Dpkg, allowance).size(), 200U);
    EXPECT_LE(kept_, std::size_t{1} << 20);
    EXPECT_EQ(Damage::TooLarge, result_.damage);
}

TEST_F(HostilePackages, EachDatabaseHasAnAllowanceOfItsOwn) {
    Allowance allowance;
    allowance.items = 1;
    tree_.write("var/lib/dpkg/status", stanza("a") + stanza("b"));
    tree_.write("lib/apk/db/installed", "P:c\nV:1\n\n");
    PackageTexts texts(allowance);
    Names names;
    for (const PackageType type : kPackageTypes) {
        visitPackages(type, Root(tree_.path()), {}, texts,
                      [&](const InstalledPackage& package) { names.emplace_back(package.name); });
    }
    EXPECT_EQ((Names{"a", "c"}), names);
}

TEST_F(HostilePackages, PackagesReadBeforeTheDeadlineAreVisited) {
    tree_.write("var/lib/dpkg/status", stanza("a"));
    Allowance allowance;
    allowance.deadline = std::chrono::steady_clock::now();
    visited(PackageType::Dpkg, allowance);
    EXPECT_EQ(Damage::OutOfTime, result_.damage);
}

TEST_F(HostilePackages, ADatabaseThatIsNotAFileIsReportedAndNotTakenForMissing) {
    for (std::size_t i = 0; i < std::size(kTypes); ++i) {
        const fs::path file = tree_.path() / kDatabases[i];
        fs::create_directories(file);
        EXPECT_EQ(Names(), visited(kTypes[i]));
        EXPECT_EQ(Damage::Unreadable, result_.damage) << file;
        EXPECT_EQ("/" + std::string(kDatabases[i]), result_.path);
        fs::remove(file);
        ASSERT_EQ(0, mkfifo(file.c_str(), 0600));
        EXPECT_EQ(Names(), visited(kTypes[i]));
        EXPECT_EQ(Damage::Unreadable, result_.damage) << file;
        fs::remove(file);
        fs::create_symlink(file.filename(), file);  // a link to itself
        EXPECT_EQ(Names(), visited(kTypes[i]));
        EXPECT_EQ(Damage::Unreadable, result_.damage) << file;
    }
}

}  // namespace
}  // namespace toolkit
