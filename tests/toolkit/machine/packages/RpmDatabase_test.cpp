#include "toolkit/machine/packages/RpmDatabase.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/machine/packages/Packages.h"

namespace toolkit {
namespace {

std::string number(std::uint64_t value, int width) {
    std::string bytes;
    for (int i = width - 1; i >= 0; --i) bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

struct Entry {
    unsigned tag;
    unsigned type;
    std::string data;
};

std::string header(const std::vector<Entry>& entries) {
    std::string index;
    std::string store;
    for (const Entry& entry : entries) {
        index += number(entry.tag, 4) + number(entry.type, 4) + number(store.size(), 4) + number(1, 4);
        store += entry.data;
    }
    return number(entries.size(), 4) + number(store.size(), 4) + index + store;
}

std::string text(const char* value) {
    return std::string(value) + '\0';
}

std::string bashHeader() {
    return header({{63, 7, std::string(16, '\x3e')},
                   {1000, 6, text("bash")},
                   {1001, 6, text("5.1.8")},
                   {1002, 6, text("6.el9")},
                   {1003, 4, number(2, 4)},
                   {1004, 9, text("The GNU shell") + text("Die Shell")},
                   {1008, 4, number(1700000000, 4)},
                   {1009, 4, number(7738634, 4)},
                   {1011, 6, text("Vendor")},
                   {1016, 9, text("System/Shells")},
                   {1022, 6, text("x86_64")},
                   {1044, 6, text("bash-5.1.8-6.el9.src.rpm")}});
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

TEST(RpmHeader, ALargePackageHasItsSizeInTheWideTag) {
    const std::string bytes = header({{1000, 6, text("a")}, {5009, 5, number(5'000'000'000, 8)}});
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(bytes, package));
    EXPECT_EQ(5'000'000'000U, package.size);
    EXPECT_FALSE(package.hasEpoch);
}

TEST(RpmHeader, ValuesOfTheWrongTypeAreUnknown) {
    const std::string bytes =
        header({{1000, 6, text("a")}, {1001, 4, text("1234")}, {1009, 6, text("1234")}});
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(bytes, package));
    EXPECT_EQ("", package.version);
    EXPECT_EQ(0U, package.size);
}

TEST(RpmHeader, AnUnterminatedTextIsNotSearchedBeyondTheMaximumLength) {
    std::vector<Entry> entries{{1000, 6, text("a")}};
    for (int i = 0; i < 60'000; ++i) entries.push_back({1004, 6, "A"});
    entries.push_back({1001, 6, std::string(8 << 20, 'A')});
    const std::string whole = header(entries);
    RpmPackage package;
    ASSERT_TRUE(readRpmHeader(whole, package));
    EXPECT_EQ("a", package.name);
    EXPECT_EQ("", package.summary);
    EXPECT_EQ("", package.version);
}

TEST(RpmHeader, DamagedAndNamelessHeadersAreRefused) {
    RpmPackage package;
    EXPECT_FALSE(readRpmHeader("", package));
    EXPECT_FALSE(readRpmHeader(header({}), package));
    EXPECT_FALSE(readRpmHeader(header({{1001, 6, text("1")}}), package));
    EXPECT_FALSE(readRpmHeader(header({{1000, 6, "no end"}}), package));
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

    static std::string insertion(const char* name) {
        std::string hex;
        for (const char c : header({{1000, 6, text(name)}, {1001, 6, text("1")}, {1002, 6, text("2")}})) {
            hex += "0123456789abcdef"[static_cast<unsigned char>(c) >> 4U];
            hex += "0123456789abcdef"[static_cast<unsigned char>(c) & 0xFU];
        }
        return "insert into Packages(blob) values (x'" + hex + "');";
    }

    std::vector<std::string> names() {
        std::vector<std::string> found;
        PackageTexts texts;
        reading_ = visitPackages(PackageType::Rpm, Root(tree_.path()), {}, texts,
                                 [&](const InstalledPackage& package) { found.emplace_back(package.name); });
        return found;
    }

    zavtest::ScratchDir tree_;
    PackageReading reading_;
};

using Names = std::vector<std::string>;
using Damage = PackageReading::Damage;
constexpr char kCreate[] =
    "create table Packages(hnum integer primary key autoincrement, blob blob not null);";

TEST_F(RpmDatabase, ChangesInTheWriteAheadLogAreRead) {
    carryOut(std::string("pragma journal_mode=wal;") + kCreate + insertion("a") +
             "pragma wal_checkpoint(truncate);" + insertion("b") + "delete from Packages where hnum = 1;" +
             insertion("c"));
    ASSERT_GT(std::filesystem::file_size(path() + "-wal"), 0U);
    EXPECT_EQ((Names{"b", "c"}), names());
    EXPECT_EQ(Damage::None, reading_.damage);
}

TEST_F(RpmDatabase, ALogThatCannotBeUsedIsReportedAndTheFileIsRead) {
    carryOut(kCreate + insertion("a"));
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
    carryOut(kCreate + insertion("a"));
    tree_.write("var/lib/rpm/rpmdb.sqlite-journal", std::string(512, '\0'));
    EXPECT_EQ(Names{"a"}, names());
    EXPECT_EQ(Damage::None, reading_.damage) << "a finished transaction leaves zeros";
    tree_.write("var/lib/rpm/rpmdb.sqlite-journal", "\xd9\xd5\x05\xf9 and more");
    EXPECT_EQ(Names{"a"}, names());
    EXPECT_EQ(Damage::Unsaved, reading_.damage);
    EXPECT_EQ("/var/lib/rpm/rpmdb.sqlite-journal", reading_.path);
}

}  // namespace
}  // namespace toolkit
