#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "tests/toolkit/quorvah/GvdbBytes.h"
#include "toolkit/quorvah/sources/Gvdb.h"
#include "toolkit/quorvah/sources/HomeFiles.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;
namespace fs = std::filesystem;

constexpr char kAccounts[] =
    "root:x:0:0::/root:/bin/sh\ndaemon:x:1:1::/usr/sbin:/bin/sh\nalice:x:1001:1001::/home/alice:/bin/sh\n"
    "bob:x:1002:1002::/home/bob:/bin/sh\n";

TEST(ScreenSaverInfo, ReportsTheSettingsOfEachDesktop) {
    const ScratchDir tree;
    tree.write("etc/passwd", kAccounts);
    tree.write("home/alice/.config/kscreenlockerrc", "[Daemon]\nAutolock=false\nTimeout=10\nLockGrace=5\n");
    tree.write("home/alice/.xscreensaver",
               "# XScreenSaver\ntimeout:\t0:10:30\nlock:\t\tTrue\nlockTimeout:\t0:01:00\nmode:\t\tblank\n");
    tree.write(
        "home/bob/.config/xfce4/xfconf/xfce-perchannel-xml/xfce4-screensaver.xml",
        "<?xml version=\"1.0\"?><channel name=\"xfce4-screensaver\" version=\"1.0\">"
        "<property name=\"saver\" type=\"empty\"><property name=\"enabled\" type=\"bool\" value=\"true\"/>"
        "<property name=\"idle-activation\" type=\"empty\"><property name=\"delay\" type=\"int\" "
        "value=\"7\"/></property></property>"
        "<property name=\"lock\" type=\"empty\"><property name=\"enabled\" type=\"bool\" "
        "value=\"false\"/></property></channel>");
    tree.write("home/bob/.config/dconf/user",
               gvdbFile({{"/org/gnome/desktop/screensaver/lock-enabled", gvdbFlag(true)},
                         {"/org/gnome/desktop/screensaver/lock-delay", gvdbNumber(30)},
                         {"/org/gnome/desktop/session/idle-delay", gvdbNumber(300)},
                         {"/org/mate/screensaver/lock-enabled", gvdbFlag(false)}}));
    tree.write("usr/sbin/.xscreensaver", "lock: True\n");
    const GroupData data = gatheredBelow(kScreenSaverInfo, tree.path());
    ASSERT_EQ((std::vector<std::string>{"alice", "alice", "bob", "bob", "bob"}), keysOf(data));
    expectAll(kScreenSaverInfo, data.instances()[0],
              {{"UserName", "alice"},
               {"ScreenSaverActive", "false"},
               {"ScreenSaverSecure", "false"},
               {"ScreenSaverTimeout", "600"},
               {"LockDelay", "5"},
               {"Desktop", "KDE"},
               {"Source", "/home/alice/.config/kscreenlockerrc"}});
    expectAll(kScreenSaverInfo, data.instances()[1],
              {{"UserName", "alice"},
               {"ScreenSaverActive", "true"},
               {"ScreenSaverSecure", "true"},
               {"ScreenSaverTimeout", "630"},
               {"ScreenSaverExecutable", "xscreensaver"},
               {"LockDelay", "60"},
               {"Desktop", "XScreenSaver"},
               {"Source", "/home/alice/.xscreensaver"}});
    expectAll(kScreenSaverInfo, data.instances()[2],
              {{"UserName", "bob"},
               {"ScreenSaverActive", "true"},
               {"ScreenSaverSecure", "false"},
               {"ScreenSaverTimeout", "420"},
               {"Desktop", "Xfce"},
               {"Source", "/home/bob/.config/xfce4/xfconf/xfce-perchannel-xml/xfce4-screensaver.xml"}});
    expectAll(kScreenSaverInfo, data.instances()[3],
              {{"UserName", "bob"},
               {"ScreenSaverSecure", "true"},
               {"ScreenSaverTimeout", "300"},
               {"LockDelay", "30"},
               {"Desktop", "GNOME"},
               {"Source", "/home/bob/.config/dconf/user"}});
    EXPECT_EQ("MATE", data.instances()[4].get("Desktop"));
    EXPECT_EQ(GroupState::Complete, data.state());
}

TEST(ScreenSaverInfo, DoesNotFollowWhatAUserPutInPlaceOfAFile) {
    const std::string settings = "lock: True\n";
    const ScratchDir tree;
    tree.write("etc/passwd", kAccounts);
    tree.write("elsewhere/secret", settings);
    const fs::path home = tree.path() / "home/alice";
    const fs::path file = home / ".xscreensaver";
    const auto expectRefused = [&](const char* what) {
        const GroupData data = gatheredBelow(kScreenSaverInfo, tree.path());
        EXPECT_TRUE(data.instances().empty()) << what;
        EXPECT_EQ("home-refused", data.reason()) << what;
        fs::remove_all(home);
        fs::create_directories(home);
    };
    fs::create_directories(home);
    fs::create_symlink("../../elsewhere/secret", file);
    expectRefused("a link");
    ASSERT_EQ(0, mkfifo(file.c_str(), 0600));
    expectRefused("a pipe that nobody writes to");
    tree.write("home/alice/.xscreensaver", settings + std::string((std::size_t{1} << 20) + 1, '#'));
    expectRefused("a huge file");
    tree.write("elsewhere/dconf/user",
               gvdbFile({{"/org/gnome/desktop/screensaver/lock-enabled", gvdbFlag(true)}}));
    fs::create_directories(home / ".config");
    fs::create_symlink("../../../elsewhere/dconf", home / ".config/dconf");
    expectRefused("a linked directory");
    fs::create_directories(file);
    expectRefused("a directory");
}

TEST(HomeFiles, DoNotTouchFileSystemsThatMayNotAnswer) {
    const ScratchDir home;
    home.write("local/.xscreensaver", "lock: True\n");
    home.write("remote/.xscreensaver", "lock: True\n");
    const Root live;
    const std::vector<Mount> mounts = {
        {"1:1", "/", "/", "ext4", "/dev/sda1", "rw"},
        {"0:50", "/", (home.path() / "remote").string(), "nfs4", "server:/", "rw"}};
    HomeFiles local(live, mounts, (home.path() / "local").string(), geteuid());
    EXPECT_TRUE(local.read(".xscreensaver"));
    EXPECT_FALSE(local.refused());
    HomeFiles remote(live, mounts, (home.path() / "remote").string(), geteuid());
    EXPECT_FALSE(remote.isOpen());
    EXPECT_FALSE(remote.read(".xscreensaver"));
    EXPECT_TRUE(remote.refused());
}

TEST(Gvdb, AnyBytesAreAccepted) {
    const std::string file = gvdbFile({{"/a/b", gvdbFlag(true)}, {"/a/c", gvdbNumber(7)}});
    ASSERT_TRUE(GvdbFile(file).find("/a/b"));
    EXPECT_EQ(true, GvdbFile(file).find("/a/b")->boolean);
    EXPECT_EQ(Count(7), GvdbFile(file).find("/a/c")->number);
    EXPECT_FALSE(GvdbFile(file).find("/a"));
    EXPECT_FALSE(GvdbFile(file).find(""));
    for (std::size_t length = 0; length < file.size(); ++length) {
        const std::string cut = file.substr(0, length);
        GvdbFile(cut).find("/a/b");
    }
    for (std::size_t at = 0; at < file.size(); ++at) {
        for (const char byte : {'\0', '\x7f', '\xff'}) {
            std::string changed = file;
            changed[at] = byte;
            GvdbFile(changed).find("/a/b");
        }
    }
    std::string circle = file;
    circle.replace(24 + 12 + 24 + 4, 4, gvdbWord(1));  // the second item is its own parent
    circle.replace(24 + 12 + 24 + 12, 2, gvdbWord(0, 2));
    EXPECT_FALSE(GvdbFile(circle).find("/a/b"));
}

}  // namespace
}  // namespace toolkit::quorvah
