#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/toolkit/quorvah/ScannerTest.h"
#include "toolkit/quorvah/groups/GroupTable.h"

namespace toolkit::quorvah {
namespace {

using quorvahtest::allDisplayNames;
using quorvahtest::Element;
namespace fs = std::filesystem;

const std::string kServer = QUORVAH_TEST_TREES "/x86-server";

class ScanInfo : public quorvahtest::ScannerTest {};

TEST_F(ScanInfo, IsTheLastGroupAndDescribesTheScan) {
    ASSERT_EQ(scan({"ScanInfo", "Memory"}, {"--root", kServer}).status, 0);
    const Element info = elements().back();
    EXPECT_EQ(info.group, "ScanInfo");
    EXPECT_EQ(info["ScannerName"], "quorvah");
    EXPECT_EQ(info["RootPath"], kServer);
    EXPECT_EQ(info["EffectiveUserId"], std::to_string(geteuid()));
    EXPECT_EQ(info["Privileged"], geteuid() == 0 ? "true" : "false");
    EXPECT_EQ(info["GroupsRequested"], "Memory;ScanInfo");
    EXPECT_EQ(info["GroupsComplete"], "Memory;ScanInfo");
    EXPECT_EQ(info["GroupsPartial"], "");
    EXPECT_EQ(info["GroupsUnread"], "");
    EXPECT_EQ(info["Complete"], "true") << "other groups than the requested ones do not count";
    EXPECT_EQ(info["Warnings"], "");
    EXPECT_FALSE(info["StartTime"].empty() || info["EndTime"].empty() || info["ElapsedTime"].empty());
    EXPECT_LE(info["StartTime"], info["EndTime"]);
}

TEST_F(ScanInfo, ListsTheStateOfEveryRequestedGroup) {
    ASSERT_EQ(scan(allDisplayNames()).status, 0);
    const Element info = elements().back();
    ASSERT_EQ(info.group, "ScanInfo");
    const auto count = [&info](const char* field) {
        return info[field].empty() ? 0 : std::ranges::count(info[field], ';') + 1;
    };
    EXPECT_EQ(count("GroupsRequested"), 48);
    EXPECT_EQ(count("GroupsComplete") + count("GroupsPartial") + count("GroupsUnread") +
                  count("GroupsNotApplicable") + count("GroupsUnsupported"),
              48);
    for (const Group* const group : allGroups()) {
        const std::string name = group->xmlName;
        const bool unsupported =
            (";" + info["GroupsUnsupported"] + ";").find(";" + name + ";") != std::string::npos;
        EXPECT_EQ(unsupported, group->gather == nullptr && group->otherPlatform == nullptr) << name;
    }
    EXPECT_EQ((";" + info["GroupsNotApplicable"]).find(";WinCluster=windows") != std::string::npos, true);
    EXPECT_EQ(info["GroupsUnsupported"], "");
}

TEST_F(ScanInfo, IsCompleteWithoutGroupsThatThisSystemCannotHave) {
    ASSERT_EQ(scan({"Memory", "WinCluster", "ScanInfo"}, {"--root", kServer}).status, 0);
    EXPECT_EQ(elements().back()["Complete"], "true");
}

TEST_F(ScanInfo, NamesTheGroupsThatATreeCannotHave) {
    const fs::path tree = dir_.write("image/etc/os-release", "ID=x\nNAME=X\n").parent_path().parent_path();
    ASSERT_EQ(scan({"OperatingSystem", "PCIDevice", "Processor", "IPAddress", "SoftwarePackages", "ScanInfo"},
                   {"--root", tree})
                  .status,
              0);
    const Element info = elements().back();
    EXPECT_EQ(info["GroupsComplete"], "OperatingSystem;ScanInfo");
    for (const char* entry : {"PCIDevice=not-in-tree", "Processor=not-in-tree", "IPAddress=not-in-tree",
                              "SoftwarePackages=no-database"})
        EXPECT_NE((";" + info["GroupsNotApplicable"] + ";").find(";" + std::string(entry) + ";"),
                  std::string::npos)
            << entry << " in " << info["GroupsNotApplicable"];
    EXPECT_EQ(info["GroupsUnread"], "");
}

TEST_F(ScanInfo, DistinguishesADamagedPackageDatabaseFromNone) {
    const fs::path tree = dir_.write("image/usr/lib/sysimage/rpm/rpmdb.sqlite", "no database at all")
                              .parent_path()
                              .parent_path()
                              .parent_path()
                              .parent_path()
                              .parent_path();
    ASSERT_EQ(scan({"SoftwarePackages", "ScanInfo"}, {"--root", tree}).status, 0);
    EXPECT_EQ(elements().back()["GroupsUnread"], "SoftwarePackages=rpm-broken");
    EXPECT_EQ(elements().back()["Complete"], "false");
}

TEST_F(ScanInfo, ReportsUnreadableFiles) {
    // Another user may enter the directory but not read the file in it.
    const fs::path tree = dir_.path() / "tree";
    fs::permissions(dir_.write("tree/sys/class/dmi/id/product_uuid", "x\n"), fs::perms::none);
    dir_.write("tree/sys/class/dmi/id/sys_vendor", "Maker\n");
    fs::permissions(dir_.path(), fs::perms(0777));
    configure({"ComponentID", "Memory", "ScanInfo"});
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // Opened while still privileged, because another user may not be able to enter its directory.
        const int program = open(QUORVAH_PROGRAM, O_RDONLY | O_CLOEXEC);
        if (geteuid() == 0 && setuid(65534) != 0) _exit(99);
        std::vector<std::string> words = {"quorvah", "-c", dir_.path() / "config.xml", "-o", out(),
                                          "--root",  tree};
        std::vector<char*> arguments;
        for (std::string& word : words) arguments.push_back(word.data());
        arguments.push_back(nullptr);
        fexecve(program, arguments.data(), environ);
        _exit(98);
    }
    int status = -1;
    waitpid(child, &status, 0);
    ASSERT_EQ(status, 0);
    EXPECT_EQ(elements().front()["Manufacturer"], "Maker");
    EXPECT_EQ(elements().front()["UUID"], "");
    EXPECT_EQ(elements().back()["GroupsPartial"], "ComponentID=permission");
    EXPECT_EQ(elements().back()["Complete"], "false");
    EXPECT_EQ(elements().back()["Privileged"], "false");
}

}  // namespace
}  // namespace toolkit::quorvah
