// `zav export` as a whole process. What it writes is read with SQLite.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <filesystem>
#include <memory>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

constexpr const char* kWeb =
    R"({"scan": {}, "status": {"Storage": {"status": "partial", "reason": "permission"}},
  "groups": {"ComponentID": [{"Name": "web1"}],
    "Memory": [{"DeviceID": "memory", "TotalVisibleMemorySize": "2097152", "InstalledMemory": ""}],
    "Storage": [{"DeviceID": "/dev/sda", "Model": "a'b\"); DROP TABLE host; --", "Removable": "true", "Colour": "red"},
                {"DeviceID": "/dev/sdb", "Size": "much"}],
    "Unheard": [{"Of": "it"}]}})";

class ExportTest : public testing::Test {
  protected:
    Ended run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"export", "--sqlite", database_});
        return Process(arguments).run();
    }
    void succeeds(const std::vector<std::string>& arguments) {
        const Ended ended = run(arguments);
        EXPECT_EQ(0, ended.status) << ended.err;
        EXPECT_EQ("", ended.out + ended.err);
    }
    std::string saved(const std::string& name, const std::string& content) {
        return scratch_.write(name, content).string();
    }

    // The rows of the result: the values of each with "|" between them, "null" for none.
    std::vector<std::string> rows(const std::string& sql) const {
        sqlite3* opened = nullptr;
        EXPECT_EQ(SQLITE_OK, sqlite3_open_v2(database_.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr));
        const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> database(opened, sqlite3_close);
        std::vector<std::string> rows;
        const auto add = [](void* result, int count, char** values, char**) {
            std::string row;
            for (int i = 0; i < count; ++i)
                row.append(i == 0 ? "" : "|").append(values[i] == nullptr ? "null" : values[i]);
            static_cast<std::vector<std::string>*>(result)->push_back(row);
            return 0;
        };
        EXPECT_EQ(SQLITE_OK, sqlite3_exec(opened, sql.c_str(), add, &rows, nullptr))
            << sqlite3_errmsg(opened);
        return rows;
    }

    using Rows = std::vector<std::string>;
    ScratchDir scratch_;
    std::string database_ = (scratch_.path() / "fleet.db").string();
    std::string web_ = saved("web.json", kWeb);
};

TEST_F(ExportTest, ValuesHaveTheTypesOfTheCatalogue) {
    succeeds({"--from", web_});
    EXPECT_EQ(
        (Rows{"2097152|integer|null"}),
        rows("SELECT TotalVisibleMemorySize, typeof(TotalVisibleMemorySize), InstalledMemory FROM Memory"));
    EXPECT_EQ((Rows{"web1|/dev/sda|1|integer", "web1|/dev/sdb|null|null"}),
              rows("SELECT host, DeviceID, Removable, typeof(Removable) FROM Storage"));
    EXPECT_EQ((Rows{"much|text"}), rows("SELECT Size, typeof(Size) FROM Storage WHERE Size IS NOT NULL"))
        << "not in the form of a count";
}

TEST_F(ExportTest, NoValueIsPartOfAStatement) {
    succeeds({"--from", web_});
    EXPECT_EQ((Rows{"a'b\"); DROP TABLE host; --"}),
              rows("SELECT Model FROM Storage WHERE Model IS NOT NULL"));
    EXPECT_EQ((Rows{"web1"}), rows("SELECT name FROM host"));
}

TEST_F(ExportTest, WhatTheCatalogueDoesNotHaveIsKept) {
    succeeds({"--from", web_});
    EXPECT_EQ((Rows{"web1|Storage|0|Colour|red", "web1|Unheard|0|Of|it"}),
              rows("SELECT * FROM other_field ORDER BY 2"));
}

TEST_F(ExportTest, TheStatusOfEachGroupIsThere) {
    succeeds({"--from", web_});
    EXPECT_EQ((Rows{"partial|permission"}),
              rows("SELECT status, reason FROM status WHERE \"group\" = 'Storage'"));
}

TEST_F(ExportTest, AnEarlierInventoryOfTheHostIsReplacedAndOthersStay) {
    succeeds({"--from", web_});
    succeeds({"--from", web_, "--host", "db1"});
    const std::string later = saved(
        "later.json",
        R"({"scan": {}, "groups": {"ComponentID": [{"Name": "web1"}], "Storage": [{"DeviceID": "/dev/sdz"}]}})");
    succeeds({"--from", later});
    EXPECT_EQ((Rows{"db1|/dev/sda", "db1|/dev/sdb", "web1|/dev/sdz"}),
              rows("SELECT host, DeviceID FROM Storage ORDER BY 1, 2"));
    EXPECT_EQ((Rows{"db1"}), rows("SELECT host FROM Memory"));
    EXPECT_EQ(Rows(), rows("PRAGMA foreign_key_check"));
    EXPECT_EQ((Rows{"ok"}), rows("PRAGMA integrity_check"));
}

TEST_F(ExportTest, SeveralInventoriesAreWrittenAtOnce) {
    const std::string db =
        saved("db.json", R"({"scan": {}, "groups": {"OperatingSystem": [{"CSName": "db1"}]}})");
    succeeds({"--from", web_, "--from", db});
    EXPECT_EQ((Rows{"db1", "web1"}), rows("SELECT name FROM host ORDER BY 1"));
}

TEST_F(ExportTest, ATableOfAnEarlierCatalogueGetsItsNewFields) {
    succeeds({"--from", web_});
    rows("ALTER TABLE Storage DROP COLUMN Model");
    succeeds({"--from", web_});
    EXPECT_EQ((Rows{"2"}), rows("SELECT count(*) FROM Storage"));
    EXPECT_EQ((Rows{"1"}), rows("SELECT count(Model) FROM Storage"));
}

TEST_F(ExportTest, AScanIsWritten) {
    const std::string prepared =
        saved("prepared.xml",
              "<Inventory><ComponentID><Name>box</Name></ComponentID>"
              "<Processor><DeviceID>cpu0</DeviceID><Flags>a;b</Flags></Processor></Inventory>");
    const Ended ended =
        Process({"export", "--sqlite", database_, "--toolkit", scanner("copies"), "--no-software"})
            .environment("ZAVTEST_OUTPUT", prepared)
            .run();
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ((Rows{"box|cpu0"}), rows("SELECT host, DeviceID FROM Processor"));
}

TEST_F(ExportTest, ANewDatabaseIsForItsOwnerOnly) {
    succeeds({"--from", web_});
    struct stat state = {};
    ASSERT_EQ(0, ::stat(database_.c_str(), &state));
    EXPECT_EQ(0600U, state.st_mode & 0777U);
}

TEST_F(ExportTest, OtherFilesAreRefusedAndStayAsTheyAre) {
    scratch_.write("fleet.db", "no database at all, but long enough to be one\n");
    Ended ended = run({"--from", web_});
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("zav: the database " + database_ + ": file is not a database\n", ended.err);
    EXPECT_EQ("no database at all, but long enough to be one\n", readAll(database_));

    std::filesystem::remove(database_);
    scratch_.write("fleet.db", "");
    rows("CREATE TABLE mine (value)");
    const std::string before = readAll(database_);
    ended = run({"--from", web_});
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("zav: " + database_ + " is a database, but not one of 'zav export'; it is left as it is\n",
              ended.err);
    EXPECT_EQ(before, readAll(database_));
}

TEST_F(ExportTest, ALinkIsNotFollowed) {
    const std::string other = saved("other.db", "");
    std::filesystem::create_symlink(other, database_);
    EXPECT_EQ(1, run({"--from", web_}).status);
    EXPECT_EQ("", readAll(other));
}

TEST_F(ExportTest, ADamagedInventoryLeavesTheDatabaseAsItIs) {
    succeeds({"--from", web_});
    const std::string before = readAll(database_);
    const std::string damaged = saved("damaged.json", "{\"groups\":");
    const Ended ended = run({"--from", web_, "--from", damaged});
    EXPECT_EQ(2, ended.status);
    EXPECT_NE(std::string::npos, ended.err.find(damaged)) << ended.err;
    EXPECT_EQ(before, readAll(database_));
}

TEST_F(ExportTest, AnInventoryMustNameItsHost) {
    const std::string nameless = saved("nameless.json", R"({"scan": {}, "groups": {"Memory": []}})");
    const Ended ended = run({"--from", nameless});
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ("zav: " + nameless + " does not name its host; name it with --host\n", ended.err);
    EXPECT_FALSE(std::filesystem::exists(database_));
}

TEST_F(ExportTest, OptionsThatContradictEachOtherAreRefused) {
    EXPECT_EQ(2, run({"--from", web_, "--from", web_, "--host", "a"}).status);
    EXPECT_EQ(2, run({"--from", web_, "--root", "/"}).status);
    EXPECT_EQ(2, run({"--sanitize"}).status);
    EXPECT_EQ(2, Process({"export", "--from", web_}).run().status);
}

}  // namespace
}  // namespace zavtest
