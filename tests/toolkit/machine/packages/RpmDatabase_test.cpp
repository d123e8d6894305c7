#include "toolkit/machine/packages/RpmDatabase.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/machine/packages/RpmHeaderBytes.h"
#include "tests/toolkit/machine/packages/RpmOldDatabases.h"
#include "toolkit/machine/packages/Packages.h"

namespace toolkit {
namespace {

std::string bashHeader() {
    return rpmHeader({{63, 7, std::string(16, '\x3e')},
                      {1000, 6, texts({"bash"})},
                      {1001, 6, texts({"5.1.8"})},
                      {1002, 6, texts({"6.el9"})},
                      {1003, 4, number(2, 4)},
                      {1004, 9, texts({"The GNU shell", "Die Shell"})},
                      {1008, 4, number(1700000000, 4)},
                      {1009, 4, number(7738634, 4)},
                      {1011, 6, texts({"Vendor"})},
                      {1016, 9, texts({"System/Shells"})},
                      {1022, 6, texts({"x86_64"})},
                      {1044, 6, texts({"bash-5.1.8-6.el9.src.rpm"})}});
}

TEST(RpmHeader, AHeaderGivesItsFields) {
    const std::string bytes = bashHeader();
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(bytes, package));
    EXPECT_EQ("bash", package.name);
    EXPECT_EQ("5.1.8", package.version);
    EXPECT_EQ("6.el9", package.release);
    EXPECT_TRUE(package.hasEpoch);
    EXPECT_EQ(2U, package.epoch);
    EXPECT_EQ("The GNU shell", package.summary);
    EXPECT_EQ(1700000000U, package.installTime);
    EXPECT_EQ(7738634U, package.size);
    EXPECT_EQ("Vendor", package.vendor);
    EXPECT_EQ("System/Shells", package.group);
    EXPECT_EQ("x86_64", package.architecture);
    EXPECT_EQ("bash-5.1.8-6.el9.src.rpm", package.sourceRpm);
}

TEST(RpmHeader, EntriesMayHaveAnyOrder) {
    const std::string bytes = rpmHeader({{1044, 6, texts({"a-1-2.src.rpm"})},
                                         {1022, 6, texts({"x86_64"})},
                                         {1016, 6, texts({"System"})},
                                         {1011, 6, texts({"Vendor"})},
                                         {1009, 4, number(7, 4)},
                                         {1008, 4, number(8, 4)},
                                         {1004, 6, texts({"Summary"})},
                                         {1003, 4, number(9, 4)},
                                         {1002, 6, texts({"2"})},
                                         {1001, 6, texts({"1"})},
                                         {1000, 6, texts({"a"})}});
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(bytes, package));
    EXPECT_EQ("a", package.name);
    EXPECT_EQ("1", package.version);
    EXPECT_EQ("2", package.release);
    EXPECT_TRUE(package.hasEpoch);
    EXPECT_EQ(9U, package.epoch);
    EXPECT_EQ("Summary", package.summary);
    EXPECT_EQ(8U, package.installTime);
    EXPECT_EQ(7U, package.size);
    EXPECT_EQ("Vendor", package.vendor);
    EXPECT_EQ("System", package.group);
    EXPECT_EQ("x86_64", package.architecture);
    EXPECT_EQ("a-1-2.src.rpm", package.sourceRpm);
}

TEST(RpmHeader, ALargePackageHasItsSizeInTheWideTag) {
    const std::string bytes = rpmHeader({{1000, 6, texts({"a"})}, {5009, 5, number(5'000'000'000, 8)}});
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(bytes, package));
    EXPECT_EQ(5'000'000'000U, package.size);
    EXPECT_FALSE(package.hasEpoch);
}

TEST(RpmHeader, ValuesOfTheWrongTypeAreUnknown) {
    const std::string bytes = rpmHeader({{1000, 6, texts({"a"})},
                                         {1001, 4, texts({"1234"})},
                                         {1003, 6, texts({"1234"})},
                                         {1004, 4, number(5, 4)},
                                         {1009, 6, texts({"1234"})}});
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(bytes, package));
    EXPECT_EQ("", package.version);
    EXPECT_FALSE(package.hasEpoch);
    EXPECT_EQ(0U, package.size);
    EXPECT_EQ("", package.summary);
    EXPECT_EQ(0U, package.installTime);
}

TEST(RpmHeader, AnUnterminatedTextIsNotSearchedBeyondTheMaximumLength) {
    std::vector<RpmEntry> entries{{1000, 6, texts({"a"})}};
    for (int i = 0; i < 60'000; ++i) entries.push_back({1004, 6, "A"});
    entries.push_back({1001, 6, std::string(8 << 20, 'A')});
    const std::string whole = rpmHeader(entries);
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(whole, package));
    EXPECT_EQ("a", package.name);
    EXPECT_EQ("", package.summary);
    EXPECT_EQ("", package.version);
}

TEST(RpmHeader, ATextMayHaveTheMaximumLength) {
    const std::string longest(kMaxValueLength, 'v');
    RpmPackage package;
    const std::string kept = rpmHeader({{1000, 6, texts({"a"})}, {1001, 6, texts({longest.c_str()})}});
    ASSERT_TRUE(readRpmHeader(kept, package));
    EXPECT_EQ(longest, package.version);
    const std::string tooLong = rpmHeader({{1000, 6, texts({"a"})}, {1001, 6, longest + texts({"v"})}});
    ASSERT_TRUE(readRpmHeader(tooLong, package));
    EXPECT_EQ("", package.version);
}

TEST(RpmHeader, ValuesMustBeInTheStore) {
    RpmPackage package;
    const std::string last = rpmHeader({{1000, 6, texts({"a"})}, {1009, 4, number(1, 4)}});
    ASSERT_TRUE(readRpmHeader(last, package));
    EXPECT_EQ(1U, package.size);
    const std::string cut = rpmHeader({{1000, 6, texts({"a"})}, {1009, 4, number(1, 3)}});
    ASSERT_TRUE(readRpmHeader(cut, package));
    EXPECT_EQ(0U, package.size);
    const std::string cutWide = rpmHeader({{1000, 6, texts({"a"})}, {5009, 5, number(1, 7)}});
    ASSERT_TRUE(readRpmHeader(cutWide, package));
    EXPECT_EQ(0U, package.size);
    for (const std::uint64_t offset : {6U, 7U, 0xFFFFFFFFU}) {
        std::string outside = last;
        outside.replace(8 + 16 + 8, 4, number(offset, 4));
        ASSERT_TRUE(readRpmHeader(outside, package));
        EXPECT_EQ(0U, package.size) << offset;
    }
}

TEST(RpmHeader, AHeaderMayHaveOneEntryAndBytesBehindIt) {
    const std::string whole = rpmHeader({{1000, 6, texts({"a"})}});
    RpmPackage package;
    EXPECT_TRUE(readRpmHeader(whole, package));
    const std::string longer = whole + "more";
    EXPECT_TRUE(readRpmHeader(longer, package));
    EXPECT_EQ("a", package.name);
    EXPECT_FALSE(readRpmHeader(whole.substr(0, 7), package));
}

TEST(RpmHeader, DamagedAndNamelessHeadersAreRefused) {
    RpmPackage package;
    EXPECT_FALSE(readRpmHeader("", package));
    EXPECT_FALSE(readRpmHeader(rpmHeader({}), package));
    EXPECT_FALSE(readRpmHeader(rpmHeader({{1001, 6, texts({"1"})}}), package));
    EXPECT_FALSE(readRpmHeader(rpmHeader({{1000, 6, "no end"}}), package));
    EXPECT_FALSE(readRpmHeader(std::string(64, '\xff'), package));
    const std::string whole = bashHeader();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(readRpmHeader(whole.substr(0, length), package)) << length;
    }
}

TEST(RpmHeader, TheNameOfASourcePackageEndsBeforeVersionAndRelease) {
    EXPECT_EQ("bash", nameOfSourceRpm("bash-5.1.8-6.el9.src.rpm"));
    EXPECT_EQ("python3-x", nameOfSourceRpm("python3-x-1-2.src.rpm"));
    for (const char* const name : {"", "-", "bash", "bash-1", "-1"})
        EXPECT_EQ("", nameOfSourceRpm(name)) << name;
}

constexpr char kCreate[] =
    "create table Packages(hnum integer primary key autoincrement, blob blob not null);";

// The rpm database of a tree, made by sqlite3.
class RpmDatabase : public testing::Test {
  protected:
    void carryOut(const std::string& statements) {
        const std::string script =
            tree_.write("script", ".dbconfig no_ckpt_on_close on\npragma wal_autocheckpoint=0;" + statements)
                .string();
        tree_.write("var/lib/rpm/script", "");
        const std::string command = "sqlite3 " + path() + " < " + script + " > " + script + ".out";
        EXPECT_EQ(0, std::system(command.c_str()));
    }
    std::string path() const { return (tree_.path() / "var/lib/rpm/rpmdb.sqlite").string(); }

    static std::string insertionOf(const std::string& header) {
        std::string hex;
        for (const char c : header) {
            hex += "0123456789abcdef"[static_cast<unsigned char>(c) >> 4U];
            hex += "0123456789abcdef"[static_cast<unsigned char>(c) & 0xFU];
        }
        return "insert into Packages(blob) values (x'" + hex + "');";
    }
    static std::string insertion(const char* name) {
        return insertionOf(
            rpmHeader({{1000, 6, texts({name})}, {1001, 6, texts({"1"})}, {1002, 6, texts({"2"})}}));
    }
    void create(const std::string& insertions) { carryOut(kCreate + insertions); }

    void visit(const PackageVisitor& visitor) {
        reading_ = visitPackages(PackageType::Rpm, Root(tree_.path()), {}, texts_, visitor);
    }
    std::vector<std::string> names() {
        std::vector<std::string> found;
        visit([&](const InstalledPackage& package) { found.emplace_back(package.name); });
        return found;
    }
    std::vector<std::string> names(std::uint64_t Allowance::*part, std::uint64_t allowed) {
        Allowance allowance;
        allowance.*part = allowed;
        std::vector<std::string> found;
        PackageTexts texts(allowance);
        reading_ = visitPackages(PackageType::Rpm, Root(tree_.path()), {}, texts,
                                 [&](const InstalledPackage& package) { found.emplace_back(package.name); });
        return found;
    }
    // The only package of a database.
    InstalledPackage packageOf(const std::string& header) {
        std::filesystem::remove(path());
        create(insertionOf(header));
        InstalledPackage found;
        visit([&](const InstalledPackage& package) { found = package; });
        return found;
    }

    zavtest::ScratchDir tree_;
    PackageTexts texts_;
    PackageReading reading_;
};

using Names = std::vector<std::string>;
using Damage = PackageReading::Damage;
TEST_F(RpmDatabase, APackageHasTheFieldsOfItsHeader) {
    const InstalledPackage package = packageOf(bashHeader());
    EXPECT_EQ(Damage::None, reading_.damage);
    EXPECT_EQ(PackageType::Rpm, package.type);
    EXPECT_EQ("bash", package.name);
    EXPECT_EQ("2:5.1.8-6.el9", package.version);
    EXPECT_EQ("2", package.epoch);
    EXPECT_EQ("5.1.8", package.upstream);
    EXPECT_EQ("6.el9", package.release);
    EXPECT_EQ("x86_64", package.architecture);
    EXPECT_EQ("bash", package.source);
    EXPECT_EQ("Vendor", package.maintainer);
    EXPECT_EQ("The GNU shell", package.description);
    EXPECT_EQ("System/Shells", package.section);
    EXPECT_EQ(7738634U, package.bytes);
    EXPECT_EQ(1700000000, package.installed);
    EXPECT_EQ("/var/lib/rpm/rpmdb.sqlite", package.database);
}

TEST_F(RpmDatabase, WhatAHeaderLacksIsUnknown) {
    const InstalledPackage package = packageOf(rpmHeader({{1000, 6, texts({"a"})}, {1001, 6, texts({"1"})}}));
    EXPECT_EQ("1-", package.version);
    EXPECT_EQ("", package.epoch);
    EXPECT_EQ("1", package.upstream);
    EXPECT_EQ("", package.release);
    EXPECT_EQ("", package.source);
    EXPECT_EQ(std::nullopt, package.bytes);
    EXPECT_EQ(std::nullopt, package.installed);
}

TEST_F(RpmDatabase, NumbersMayBeAsLargeAsSignedOnes) {
    for (const std::uint64_t value : {std::uint64_t{1}, kMaxCount, kMaxCount + 1}) {
        const InstalledPackage package = packageOf(
            rpmHeader({{1000, 6, texts({"a"})}, {1008, 5, number(value, 8)}, {5009, 5, number(value, 8)}}));
        EXPECT_EQ(value <= kMaxCount, package.bytes.has_value()) << value;
        EXPECT_EQ(value <= kMaxCount, package.installed.has_value()) << value;
        EXPECT_EQ(value, package.bytes.value_or(value));
        EXPECT_EQ(static_cast<std::int64_t>(value),
                  package.installed.value_or(static_cast<std::int64_t>(value)));
    }
}

TEST_F(RpmDatabase, KeysAreNoPackages) {
    create(insertion("a") + insertion("gpg-pubkey") + insertion("b"));
    EXPECT_EQ((Names{"a", "b"}), names());
    EXPECT_EQ(Damage::None, reading_.damage);
}

TEST_F(RpmDatabase, ADamagedHeaderCostsNoOther) {
    create(insertion("a") + insertionOf("damaged") + insertion("b"));
    EXPECT_EQ((Names{"a", "b"}), names());
    EXPECT_EQ(Damage::Broken, reading_.damage);
    EXPECT_EQ("/var/lib/rpm/rpmdb.sqlite", reading_.path);
}

TEST_F(RpmDatabase, ADamagedFileIsReported) {
    create(insertion("a") + insertion("b"));
    std::filesystem::resize_file(path(), 4096);
    EXPECT_EQ(Names(), names());
    EXPECT_EQ(Damage::Broken, reading_.damage);
}

TEST_F(RpmDatabase, ADatabaseThatExceedsTheAllowanceIsReadUpToThere) {
    create(insertion("aaa") + insertion("bbb") + insertion("ccc"));
    EXPECT_EQ((Names{"aaa", "bbb", "ccc"}), names(&Allowance::items, 3));
    EXPECT_EQ(Damage::None, reading_.damage);
    EXPECT_EQ((Names{"aaa", "bbb"}), names(&Allowance::items, 2));
    EXPECT_EQ(Damage::TooLarge, reading_.damage);
    EXPECT_EQ("/var/lib/rpm/rpmdb.sqlite", reading_.path);
    const std::size_t kept = std::string("/var/lib/rpm/rpmdb.sqlite").size() + std::string("aaa1-2").size();
    EXPECT_EQ(Names{"aaa"}, names(&Allowance::bytesKept, kept));
    EXPECT_EQ(Damage::TooLarge, reading_.damage);
    EXPECT_EQ(Names(), names(&Allowance::bytesKept, kept - 1)) << "its version has no room";
    EXPECT_EQ(Names(), names(&Allowance::bytesRead, 4096));
    EXPECT_EQ(Damage::TooLarge, reading_.damage);
}

TEST_F(RpmDatabase, TheFolderOfTheSystemImageComesFirst) {
    create(insertion("old"));
    EXPECT_EQ(Names{"old"}, names());
    std::filesystem::create_directories(tree_.path() / "usr/lib/sysimage/rpm");
    std::filesystem::rename(path(), tree_.path() / "usr/lib/sysimage/rpm/rpmdb.sqlite");
    create(insertion("other"));
    EXPECT_EQ(Names{"old"}, names());
    std::filesystem::remove(tree_.path() / "usr/lib/sysimage/rpm/rpmdb.sqlite");
    tree_.write("usr/lib/sysimage/rpm/Packages.db", "RpmP");
    EXPECT_EQ(Names(), names());
    EXPECT_EQ(Damage::Unsupported, reading_.damage);
    EXPECT_EQ("/usr/lib/sysimage/rpm/Packages.db", reading_.path);
}

TEST_F(RpmDatabase, DatabasesOfEarlierVersionsAreRead) {
    const std::string header =
        rpmHeader({{1000, 6, texts({"a"})}, {1001, 6, texts({"1"})}, {1002, 6, texts({"2"})}});
    tree_.write("var/lib/rpm/Packages.db", ndbFile({header, header}));
    EXPECT_EQ((Names{"a", "a"}), names());
    EXPECT_EQ(Damage::None, reading_.damage);
    std::filesystem::remove(tree_.path() / "var/lib/rpm/Packages.db");
    BerkeleyFile berkeley;
    berkeley.add(header);
    tree_.write("var/lib/rpm/Packages", berkeley.bytes());
    EXPECT_EQ(Names{"a"}, names());
    EXPECT_EQ(Damage::None, reading_.damage);
    tree_.write("var/lib/rpm/Packages", berkeley.bytes().substr(0, 700));
    EXPECT_EQ(Names(), names());
    EXPECT_EQ(Damage::Broken, reading_.damage);
}

TEST_F(RpmDatabase, FilesOfOtherKindsInTheirPlaceAreReported) {
    for (const std::string file : {"Packages", "Packages.db"}) {
        const std::filesystem::path written = tree_.write("var/lib/rpm/" + file, "old");
        EXPECT_EQ(Names(), names());
        EXPECT_EQ(Damage::Unsupported, reading_.damage);
        EXPECT_EQ("/var/lib/rpm/" + file, reading_.path);
        std::filesystem::remove(written);
    }
}

TEST_F(RpmDatabase, ADatabaseThatIsNoRegularFileIsReported) {
    std::filesystem::create_directories(path());
    EXPECT_EQ(Names(), names());
    EXPECT_EQ(Damage::Unreadable, reading_.damage);
    EXPECT_EQ("/var/lib/rpm/rpmdb.sqlite", reading_.path);
}

TEST_F(RpmDatabase, ChangesInTheWriteAheadLogAreRead) {
    carryOut(std::string("pragma journal_mode=wal;") + kCreate + insertion("a") +
             "pragma wal_checkpoint(truncate);" + insertion("b") + "delete from Packages where hnum = 1;" +
             insertion("c"));
    ASSERT_GT(std::filesystem::file_size(path() + "-wal"), 0U);
    EXPECT_EQ((Names{"b", "c"}), names());
    EXPECT_EQ(Damage::None, reading_.damage);
}

TEST_F(RpmDatabase, ALogThatCannotBeUsedIsReportedAndTheFileIsRead) {
    create(insertion("a"));
    tree_.write("var/lib/rpm/rpmdb.sqlite-wal", "no log");
    EXPECT_EQ(Names{"a"}, names());
    EXPECT_EQ(Damage::Unsaved, reading_.damage);
    EXPECT_EQ("/var/lib/rpm/rpmdb.sqlite-wal", reading_.path);
    std::filesystem::remove(path() + "-wal");
    std::filesystem::create_directory(path() + "-wal");
    EXPECT_EQ(Names{"a"}, names());
    EXPECT_EQ(Damage::Unreadable, reading_.damage);
}

TEST_F(RpmDatabase, TheJournalOfAnUnfinishedTransactionIsReported) {
    create(insertion("a"));
    tree_.write("var/lib/rpm/rpmdb.sqlite-journal", std::string(1, '\0') + "old content");
    EXPECT_EQ(Names{"a"}, names());
    EXPECT_EQ(Damage::None, reading_.damage) << "a finished transaction leaves zeros";
    tree_.write("var/lib/rpm/rpmdb.sqlite-journal", "");
    EXPECT_EQ(Names{"a"}, names());
    EXPECT_EQ(Damage::None, reading_.damage);
    tree_.write("var/lib/rpm/rpmdb.sqlite-journal", "\xd9\xd5\x05\xf9 and more");
    EXPECT_EQ(Names{"a"}, names());
    EXPECT_EQ(Damage::Unsaved, reading_.damage);
    EXPECT_EQ("/var/lib/rpm/rpmdb.sqlite-journal", reading_.path);
}

}  // namespace
}  // namespace toolkit
