#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

constexpr char kSsh[] =
    "[Unit]\nDescription=Secure shell server\n\n[Service]\nExecStart=-/usr/sbin/sshd -D $OPTS --password=x\n"
    "ExecStart=/usr/bin/second\n\n[Install]\nWantedBy=multi-user.target\nAlias=sshd.service\n";

TEST(ServiceInfo, ReportsHowUnitsAreStarted) {
    const ScratchDir tree;
    const std::string units = "usr/lib/systemd/system/";
    tree.write(units + "ssh.service", kSsh);
    tree.write(units + "off.service", "[Service]\nExecStart=/bin/off\n[Install]\nWantedBy=x.target\n");
    tree.write(units + "static.service",
               "[Unit]\nDescription=Static\n[Service]\nUser=daemon\nExecStart=\"/opt/a b/run\" x\n");
    tree.write(units + "masked.service", "[Service]\nExecStart=/bin/masked\n");
    tree.write(units + "empty.service", "");
    tree.write(units + "other.socket", "[Socket]\n");
    tree.write(units + "getty@.service",
               "[Unit]\nDescription=Getty on "
               "%I\n[Service]\nExecStart=/sbin/agetty\n[Install]\nWantedBy=getty.target\n");
    tree.link("etc/systemd/system/masked.service", "/dev/null");
    tree.link("etc/systemd/system/sshd.service", "/usr/lib/systemd/system/ssh.service");
    tree.link("etc/systemd/system/multi-user.target.wants/ssh.service",
              "/usr/lib/systemd/system/ssh.service");
    tree.link("etc/systemd/system/getty.target.wants/getty@tty1.service",
              "/usr/lib/systemd/system/getty@.service");
    tree.write("etc/systemd/system/static.service.d/override.conf",
               "[Service]\nUser=nobody\nExecStart=\nExecStart=/opt/new\n");
    const GroupData data = gatheredBelow(kServiceInfo, tree.path());
    EXPECT_EQ((std::vector<std::string>{"empty.service", "getty@.service", "getty@tty1.service",
                                        "masked.service", "off.service", "ssh.service", "static.service"}),
              keysOf(data));
    expectAll(kServiceInfo, instanceOf(data, "ssh.service"),
              {{"Name", "ssh.service"},
               {"Caption", "Secure shell server"},
               {"StartMode", "Automatic"},
               {"PathName", "/usr/sbin/sshd"},
               {"StartName", "root"},
               {"UnitFile", "/usr/lib/systemd/system/ssh.service"},
               {"InitSystem", "systemd"}});
    expectAll(kServiceInfo, instanceOf(data, "static.service"),
              {{"Name", "static.service"},
               {"Caption", "Static"},
               {"StartMode", "Manual"},
               {"PathName", "/opt/new"},
               {"StartName", "nobody"},
               {"UnitFile", "/usr/lib/systemd/system/static.service"},
               {"InitSystem", "systemd"}});
    EXPECT_EQ("Disabled", instanceOf(data, "off.service").get("StartMode"));
    EXPECT_EQ("Masked", instanceOf(data, "masked.service").get("StartMode"));
    EXPECT_EQ("Masked", instanceOf(data, "empty.service").get("StartMode"));
    EXPECT_EQ("Automatic", instanceOf(data, "getty@tty1.service").get("StartMode"));
    EXPECT_EQ("Getty on %I", instanceOf(data, "getty@tty1.service").get("Caption"));
    EXPECT_EQ("Disabled", instanceOf(data, "getty@.service").get("StartMode"));
}

TEST(ServiceInfo, ReportsScriptsThatNoUnitHides) {
    const ScratchDir tree;
    tree.write("etc/init.d/cron",
               "#!/bin/sh\n### BEGIN INIT INFO\n# Provides: cron\n# Short-Description: Regular jobs\n### END "
               "INIT INFO\n");
    tree.write("etc/init.d/ssh", "#!/bin/sh\n### BEGIN INIT INFO\n### END INIT INFO\n");
    tree.write("etc/init.d/README", "Read this.\n");
    tree.write("etc/init.d/sshd", "#!/sbin/openrc-run\ndescription=\"OpenBSD Secure Shell server\"\n");
    tree.link("etc/rc2.d/S01cron", "../init.d/cron");
    tree.link("etc/rc2.d/K01ssh", "../init.d/ssh");
    tree.link("etc/runlevels/default/sshd", "/etc/init.d/sshd");
    tree.write("usr/lib/systemd/system/ssh.service", kSsh);
    const GroupData data = gatheredBelow(kServiceInfo, tree.path());
    EXPECT_EQ((std::vector<std::string>{"cron", "ssh.service", "sshd"}), keysOf(data));
    expectAll(kServiceInfo, instanceOf(data, "cron"),
              {{"Name", "cron"},
               {"Caption", "Regular jobs"},
               {"StartMode", "Automatic"},
               {"PathName", "/etc/init.d/cron"},
               {"StartName", "root"},
               {"UnitFile", "/etc/init.d/cron"},
               {"InitSystem", "sysv"}});
    expectAll(kServiceInfo, instanceOf(data, "sshd"),
              {{"Name", "sshd"},
               {"Caption", "OpenBSD Secure Shell server"},
               {"StartMode", "Automatic"},
               {"PathName", "/etc/init.d/sshd"},
               {"StartName", "root"},
               {"UnitFile", "/etc/init.d/sshd"},
               {"InitSystem", "openrc"}});
}

}  // namespace
}  // namespace toolkit::quorvah
