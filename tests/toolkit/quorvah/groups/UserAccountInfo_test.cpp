#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "tests/toolkit/quorvah/LoginRecords.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

constexpr std::uint64_t kMonday = 1700000000;  // 2023-11-14T22:13:20Z

TEST(UserAccountInfo, ReportsAccountsWithTheirGroupsAndDates) {
    const ScratchDir tree;
    tree.write("etc/passwd",
               "root:x:0:0:root:/root:/bin/bash\n"
               "+@netgroup::::::\n"
               "broken line\n"
               "alice:x:1001:100:Alice Example,Room 5,,:/home/alice:/bin/zsh\n"
               "nobody:*:65534:65534::/nonexistent:/usr/sbin/nologin\n"
               "eve:x:-1:1::/:/\n");
    tree.write("etc/group", "root:x:0:\nusers:x:100:\nsudo:x:27:alice,bob\nvideo:x:44:alice\n");
    tree.write(
        "etc/shadow",
        "root:*:19000:0:99999:7:::\nalice:$y$j9T$secret:19500:0:90:7::19600:\nnobody:!:19000:0:99999:7:::\n");
    tree.write("etc/login.defs", "# UID_MIN 5\nUID_MIN\t\t\t 1000\n");
    tree.write("proc/stat", "btime 1700000000\n");
    tree.write("proc/uptime", "10.00 5.00\n");
    std::string lastlog(std::size_t{1002} * 292, '\0');
    putNumber(lastlog, std::size_t{1001} * 292, 4, kMonday, false);
    tree.write("var/log/lastlog", lastlog);
    const GroupData data = gatheredBelow(kUserAccountInfo, tree.path());
    ASSERT_EQ((std::vector<std::string>{"0", "1001", "65534"}), keysOf(data));
    expectAll(kUserAccountInfo, instanceOf(data, "1001"),
              {{"UserID", "1001"},
               {"Name", "alice"},
               {"Description", "Alice Example"},
               {"HomeDirectory", "/home/alice"},
               {"Disabled", "true"},
               {"PasswordLastChange", "2023-05-23"},
               {"PasswordExpires", "2023-08-21"},
               {"GroupId", "100"},
               {"GroupName", "users"},
               {"Groups", "sudo;video"},
               {"LoginShell", "/bin/zsh"},
               {"SystemAccount", "false"},
               {"LastLogin", "2023-11-14T22:13:20Z"}});
    expectAll(kUserAccountInfo, instanceOf(data, "0"),
              {{"UserID", "0"},
               {"Name", "root"},
               {"Description", "root"},
               {"HomeDirectory", "/root"},
               {"Disabled", "true"},
               {"PasswordLastChange", "2022-01-08"},
               {"GroupId", "0"},
               {"GroupName", "root"},
               {"LoginShell", "/bin/bash"},
               {"SystemAccount", "true"}});
    EXPECT_EQ("true", instanceOf(data, "65534").get("SystemAccount"));
    for (const Instance& account : data.instances())
        EXPECT_EQ(std::string::npos, joined(account).find("secret")) << "a hash is never reported";
}

TEST(UserAccountInfo, WithoutTheShadowFileDisabledIsUnknown) {
    const ScratchDir tree;
    tree.write("etc/passwd", "alice:x:1001:100::/home/alice:/bin/sh\n");
    const GroupData data = gatheredBelow(kUserAccountInfo, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    EXPECT_EQ("", data.instances().front().get("Disabled"));
}

TEST(UserAccountInfoLive, MatchesTheAccountsOfTheSystem) {
    Rows theirs;
    for (const std::string& line : linesOf("getent -s files passwd")) {
        const std::vector<std::string> fields = fieldsOf(line, ':');
        theirs.push_back(fields[2] + "\t" + fields[0] + "\t" + fields[3] + "\t" + fields[5] + "\t" +
                         fields[6]);
    }
    const GroupData data = gatheredLive(kUserAccountInfo);
    EXPECT_EQ(sorted(theirs), rowsOf(data, {"UserID", "Name", "GroupId", "HomeDirectory", "LoginShell"}));
}

}  // namespace
}  // namespace toolkit::quorvah
