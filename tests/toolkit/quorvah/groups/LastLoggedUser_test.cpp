#include <gtest/gtest.h>
#include <sqlite3.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "tests/toolkit/quorvah/LoginRecords.h"
#include "toolkit/quorvah/sources/Logins.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

constexpr std::uint64_t kMonday = 1700000000;  // 2023-11-14T22:13:20Z

void makeDatabase(const std::filesystem::path& path, const std::string& statements) {
    std::filesystem::create_directories(path.parent_path());
    sqlite3* database = nullptr;
    ASSERT_EQ(SQLITE_OK, sqlite3_open(path.c_str(), &database));
    EXPECT_EQ(SQLITE_OK, sqlite3_exec(database, statements.c_str(), nullptr, nullptr, nullptr));
    sqlite3_close(database);
}

TEST(LastLoggedUser, ReportsTheNewestLoginAndItsEnd) {
    for (const bool wide : {false, true}) {
        for (const bool big : {false, true}) {
            const ScratchDir tree;
            const auto record = [&](unsigned type, const char* line, const char* user, const char* host,
                                    std::uint64_t time) {
                return loginRecord(type, line, user, host, time, wide, big);
            };
            tree.write("var/log/wtmp", record(kBootRecord, "~", "reboot", "6.1.0", kMonday - 100) +
                                           record(kLoginRecord, "tty1", "root", "", kMonday - 50) +
                                           record(kLoginRecord, "pts/0", "alice", "192.0.2.7", kMonday) +
                                           record(kLogoutRecord, "tty1", "", "", kMonday + 10) +
                                           record(kLogoutRecord, "pts/0", "", "", kMonday + 60) +
                                           record(kLogoutRecord, "pts/0", "", "", kMonday + 90));
            tree.write("etc/passwd", "root:x:0:0::/root:/bin/sh\nalice:x:1001:1001::/home/alice:/bin/bash\n");
            const GroupData data = gatheredBelow(kLastLoggedUser, tree.path());
            ASSERT_EQ(1U, data.instances().size()) << wide << big;
            expectAll(kLastLoggedUser, data.instances().front(),
                      {{"Name", "alice"},
                       {"UserID", "1001"},
                       {"LastLogin", "2023-11-14T22:13:20Z"},
                       {"LogoutTime", "2023-11-14T22:14:20Z"},
                       {"Terminal", "pts/0"},
                       {"RemoteHost", "192.0.2.7"},
                       {"SessionType", "Remote"}});
        }
    }
}

TEST(LastLoggedUser, AStopOfTheSystemEndsASession) {
    const ScratchDir tree;
    tree.write("var/log/wtmp", loginRecord(kLoginRecord, "tty2", "bob", "", kMonday) +
                                   loginRecord(1, "~", "shutdown", "6.1.0", kMonday + 3600) +
                                   loginRecord(kBootRecord, "~", "reboot", "6.1.0", kMonday + 7200) +
                                   "cut off");
    const GroupData data = gatheredBelow(kLastLoggedUser, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    EXPECT_EQ("2023-11-14T23:13:20Z", data.instances().front().get("LogoutTime"));
    EXPECT_EQ("Console", data.instances().front().get("SessionType"));
}

TEST(LastLoggedUser, OneWhoIsLoggedInHasNoEnd) {
    const ScratchDir tree;
    tree.write("run/utmp", loginRecord(kLoginRecord, ":0", "carol", ":0", kMonday));
    const GroupData data = gatheredBelow(kLastLoggedUser, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kLastLoggedUser, data.instances().front(),
              {{"Name", "carol"},
               {"LastLogin", "2023-11-14T22:13:20Z"},
               {"Terminal", ":0"},
               {"SessionType", "Graphical"}});
}

TEST(LastLoggedUser, ReadsTheDatabasesOfNewerSystems) {
    const ScratchDir tree;
    makeDatabase(tree.path() / "var/lib/wtmpdb/wtmp.db",
                 "CREATE TABLE wtmp(ID INTEGER PRIMARY KEY, Type INTEGER, User TEXT NOT NULL, Login INTEGER, "
                 "Logout INTEGER, TTY TEXT, RemoteHost TEXT, Service TEXT) STRICT;"
                 "INSERT INTO wtmp VALUES (1, 1, 'reboot', 1800000000000000, NULL, '~', '6.12', NULL),"
                 "(2, 3, 'dave', 1700000000000000, 1700000060000000, 'pts/1', '192.0.2.9', 'sshd'),"
                 "(3, 3, 'erin', 1600000000000000, NULL, 'tty1', NULL, 'login');");
    makeDatabase(
        tree.path() / "var/lib/lastlog/lastlog2.db",
        "CREATE TABLE Lastlog2(Name TEXT PRIMARY KEY, Time INTEGER, TTY TEXT, RemoteHost TEXT, "
        "Service TEXT) STRICT; INSERT INTO Lastlog2 VALUES ('frank', 1650000000, 'tty3', '', 'login');");
    const GroupData data = gatheredBelow(kLastLoggedUser, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    EXPECT_EQ("dave", data.instances().front().get("Name"));
    EXPECT_EQ("2023-11-14T22:14:20Z", data.instances().front().get("LogoutTime"));
}

TEST(LastLoggedUser, ADamagedDatabaseIsReported) {
    const ScratchDir tree;
    tree.write("var/lib/wtmpdb/wtmp.db", "no database");
    const GroupData data = gatheredBelow(kLastLoggedUser, tree.path());
    EXPECT_EQ(GroupState::Unread, data.state());
    EXPECT_EQ("logins-broken", data.reason());
}

TEST(Logins, AnyBytesAreAccepted) {
    EXPECT_FALSE(newestLogin("", 384));
    EXPECT_FALSE(newestLogin(std::string(383, '\x07'), 384));
    EXPECT_FALSE(newestLogin(std::string(3840, '\xff'), 384));
    EXPECT_FALSE(newestLogin(std::string(4000, '\0'), 400));
    EXPECT_FALSE(newestLogin(loginRecord(kLoginRecord, "tty1", "x", "", 5), 384)) << "no time of a login";
}

}  // namespace
}  // namespace toolkit::quorvah
