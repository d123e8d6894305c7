#include "cli/diff/InventoryDiff.h"

#include <gtest/gtest.h>

#include "cli/diff/InventoryFile.h"
#include "cli/formats/DiffWriter.h"

namespace zavcli {
namespace {

SavedInventory inventory(const std::string& groups) {
    SavedInventory saved = parseInventory("<Hardware>" + groups + "</Hardware>");
    saved.file = "f";
    return saved;
}

std::string element(const std::string& name, const std::string& content) {
    return "<" + name + ">" + content + "</" + name + ">";
}

std::string disk(const std::string& device, const std::string& model, const std::string& more = "") {
    return element("Storage", element("DeviceID", device) + element("Model", model) + more);
}

std::string address(const std::string& ip, const std::string& interface, const std::string& prefix) {
    return element("IPAddress",
                   element("IPv4Address", ip) + element("Name", interface) + element("PrefixLength", prefix));
}

std::string scanInfo(bool privileged, const std::string& more = "") {
    return element("ScanInfo", element("Privileged", privileged ? "true" : "false") + more);
}

InventoryDiff compare(const std::string& before, const std::string& after) {
    return compareInventories(inventory(before), inventory(after));
}

// The differences without the names of the files.
std::string differences(const std::string& before, const std::string& after) {
    const std::string text = diffText(inventory(before), inventory(after), compare(before, after));
    return text.empty() ? "" : text.substr(text.find("\n\n") + 2);
}

TEST(InventoryDiff, EqualInventoriesDoNotDiffer) {
    EXPECT_EQ("", differences(disk("/dev/sda", "A"), disk("/dev/sda", "A")));
    EXPECT_TRUE(compare(disk("/dev/sda", "A"), disk("/dev/sda", "A")).notes.empty());
}

TEST(InventoryDiff, InstancesAreRecognisedByTheirKeyInAnyOrder) {
    EXPECT_EQ("", differences(disk("/dev/sda", "A") + disk("/dev/sdb", "B"),
                              disk("/dev/sdb", "B") + disk("/dev/sda", "A")));
    EXPECT_EQ("Storage\n  - /dev/sda, A\n  + /dev/sdc, C\n    /dev/sdb, D\n      Model: B -> D\n",
              differences(disk("/dev/sda", "A") + disk("/dev/sdb", "B"),
                          disk("/dev/sdb", "D") + disk("/dev/sdc", "C")));
}

TEST(InventoryDiff, SeveralFieldsTogetherMayBeTheKey) {
    EXPECT_EQ("IPAddress\n    10.0.0.1, eth1\n      PrefixLength: 8 -> 24\n",
              differences(address("10.0.0.1", "eth0", "8") + address("10.0.0.1", "eth1", "8"),
                          address("10.0.0.1", "eth1", "24") + address("10.0.0.1", "eth0", "8")));
}

TEST(InventoryDiff, InstancesWithTheSameKeyArePairedInTheirOrder) {
    EXPECT_EQ("", differences(disk("/dev/sda", "A") + disk("/dev/sda", "B"),
                              disk("/dev/sda", "A") + disk("/dev/sda", "B")));
    EXPECT_EQ("Storage\n  + /dev/sda, C\n    /dev/sda, X\n      Model: B -> X\n",
              differences(disk("/dev/sda", "A") + disk("/dev/sda", "B"),
                          disk("/dev/sda", "A") + disk("/dev/sda", "X") + disk("/dev/sda", "C")));
}

TEST(InventoryDiff, VolatileFieldsAreLeftOut) {
    const auto memory = [](const std::string& total, const std::string& free) {
        return element("Memory", element("TotalVisibleMemorySize", total) + element("MemAvailable", free));
    };
    EXPECT_EQ("", differences(memory("8", "1"), memory("8", "2")));
    EXPECT_EQ("Memory\n      TotalVisibleMemorySize: 8 -> 16\n",
              differences(memory("8", "1"), memory("16", "2")));
}

TEST(InventoryDiff, TheReportOnTheScanIsNotCompared) {
    EXPECT_EQ("", differences(scanInfo(true), scanInfo(false)));
}

TEST(InventoryDiff, AnotherVersionOfAPackageIsAChange) {
    const auto package = [](const std::string& version, const std::string& query = "?arch=amd64") {
        return element("SoftwarePackages", element("InstanceID", "pkg:deb/debian/bash@" + version + query) +
                                               element("Name", "bash"));
    };
    EXPECT_EQ(
        "SoftwarePackages\n    pkg:deb/debian/bash@2?arch=amd64, bash\n"
        "      InstanceID: pkg:deb/debian/bash@1?arch=amd64 -> pkg:deb/debian/bash@2?arch=amd64\n",
        differences(package("1"), package("2")));
    EXPECT_EQ("SoftwarePackages\n  - pkg:deb/debian/bash@1?arch=amd64, bash\n",
              differences(package("1") + package("2"), package("2")))
        << "a version that stays is not taken for another one";
    EXPECT_EQ(
        "SoftwarePackages\n  - pkg:deb/debian/bash@1?arch=amd64, bash\n"
        "  + pkg:deb/debian/bash@1?arch=i386, bash\n",
        differences(package("1"), package("1", "?arch=i386")));
}

TEST(InventoryDiff, PartsOfAListAreToldApart) {
    const auto processor = [](const std::string& flags) {
        return element("Processor", element("DeviceID", "cpu0") + element("Flags", flags));
    };
    EXPECT_EQ("Processor\n    cpu0\n      Flags: -mpx +avx\n",
              differences(processor("fpu;mpx"), processor("fpu;avx")));
    EXPECT_EQ("Processor\n    cpu0\n      Flags: fpu;mpx -> mpx;fpu\n",
              differences(processor("fpu;mpx"), processor("mpx;fpu")));
    EXPECT_EQ("Processor\n    cpu0\n      Flags: (empty) -> fpu\n",
              differences(processor(""), processor("fpu")));
}

TEST(InventoryDiff, WhatOnlyRootSeesIsToldAsSuch) {
    const std::string root = disk("/dev/sda", "A", element("SerialNumber", "S")) + scanInfo(true);
    const std::string user = disk("/dev/sda", "A", element("SerialNumber", "")) + scanInfo(false);
    EXPECT_EQ(
        "Seen with the rights of root only:\n\nStorage\n    /dev/sda, A\n      SerialNumber: S -> (empty)\n",
        differences(root, user));
    EXPECT_FALSE(compare(root, user).machineDiffers());
    EXPECT_FALSE(compare(user, root).machineDiffers());
    InventoryDiff diff = compare(root, user);
    diff.ignoreAccess();
    EXPECT_TRUE(diff.groups.empty());
}

TEST(InventoryDiff, AChangeThatEveryoneSeesIsNoMatterOfRights) {
    const std::string root =
        disk("/dev/sda", "A", element("SerialNumber", "S") + element("Size", "1")) + scanInfo(true);
    const std::string user =
        disk("/dev/sda", "A", element("SerialNumber", "") + element("Size", "2")) + scanInfo(false);
    InventoryDiff diff = compare(root, user);
    EXPECT_TRUE(diff.machineDiffers());
    diff.ignoreAccess();
    ASSERT_EQ(1U, diff.groups.size());
    ASSERT_EQ(1U, diff.groups[0].instances[0].values.size());
    EXPECT_EQ("Size", diff.groups[0].instances[0].values[0].field);
}

TEST(InventoryDiff, WithTheSameRightsAMissingSerialNumberIsAChange) {
    for (const bool root : {true, false}) {
        EXPECT_TRUE(compare(disk("/dev/sda", "A", element("SerialNumber", "S")) + scanInfo(root),
                            disk("/dev/sda", "A", element("SerialNumber", "")) + scanInfo(root))
                        .machineDiffers());
    }
}

TEST(InventoryDiff, InstancesOfAGroupThatOnlyRootMayReadNeedRoot) {
    const std::string root =
        element("SMBIOS", element("Handle", "0x0001")) + scanInfo(true, element("GroupsRequested", "SMBIOS"));
    const std::string user =
        scanInfo(false, element("GroupsRequested", "SMBIOS") + element("GroupsUnread", "SMBIOS=permission"));
    const InventoryDiff diff = compare(root, user);
    ASSERT_EQ(1U, diff.groups.size());
    EXPECT_FALSE(diff.machineDiffers());
    EXPECT_TRUE(diff.notes.empty());
}

TEST(InventoryDiff, ModulesArePairedWithoutTheKeysThatOnlyRootSees) {
    const auto module = [](const std::string& bank, const std::string& speed) {
        return element("MemoryModules", element("DeviceLocator", "DIMM 0") + element("BankLocator", bank) +
                                            element("Handle", bank) + element("Capacity", "1") +
                                            element("Speed", speed));
    };
    const InventoryDiff diff =
        compare(module("B", "3200") + scanInfo(true), module("", "") + scanInfo(false));
    ASSERT_EQ(1U, diff.groups.size());
    ASSERT_EQ(1U, diff.groups[0].instances.size());
    EXPECT_EQ(InstanceChange::Kind::Changed, diff.groups[0].instances[0].kind);
    EXPECT_FALSE(diff.machineDiffers());
}

TEST(InventoryDiff, WhatOnlyARunningMachineTellsIsToldAsSuch) {
    const auto withLabel = [](const std::string& label, const std::string& root) {
        return element("IPAddress", element("IPv4Address", "10.0.0.1") + element("Name", "eth0") +
                                        element("Label", label)) +
               scanInfo(true, element("RootPath", root));
    };
    EXPECT_EQ(
        "Known of a running machine only:\n\nIPAddress\n    10.0.0.1, eth0\n      Label: eth0:1 -> (empty)\n",
        differences(withLabel("eth0:1", ""), withLabel("", "/mnt")));
    EXPECT_FALSE(compare(withLabel("eth0:1", ""), withLabel("", "/mnt")).machineDiffers());
    EXPECT_TRUE(compare(withLabel("eth0:1", "/mnt"), withLabel("", "/mnt")).machineDiffers());
}

TEST(InventoryDiff, HashesAreNotCompared) {
    const std::string plain = address("10.0.0.1", "eth0", "8") + address("10.0.0.2", "eth1", "24");
    const std::string hashed =
        address("ffffffffffffffff", "eth1", "24") + address("0000000000000000", "eth0", "8");
    const InventoryDiff diff = compare(plain, hashed);
    EXPECT_TRUE(diff.groups.empty());
    EXPECT_EQ(std::vector<std::string>{"f has hashes instead of private values, which are not compared"},
              diff.notes);
    EXPECT_TRUE(compare(plain, address("ffffffffffffffff", "eth0", "9")).machineDiffers());
}

TEST(InventoryDiff, AGroupThatCouldNotBeReadHasLostNothing) {
    const std::string read = disk("/dev/sda", "A") + scanInfo(true, element("GroupsRequested", "Storage"));
    const std::string failed =
        scanInfo(true, element("GroupsRequested", "Storage") + element("GroupsUnread", "Storage=timeout"));
    const InventoryDiff diff = compare(read, failed);
    EXPECT_TRUE(diff.groups.empty());
    EXPECT_EQ(std::vector<std::string>{"not compared: Storage (unread in f: it took too long)"}, diff.notes);
}

TEST(InventoryDiff, AGroupOfOneInventoryIsNoted) {
    const InventoryDiff diff =
        compare(disk("/dev/sda", "A"), element("Memory", element("DeviceID", "memory")));
    EXPECT_TRUE(diff.groups.empty());
    EXPECT_EQ(std::vector<std::string>{"not compared: Storage, Memory (only in f)"}, diff.notes);
}

TEST(InventoryDiff, AFieldThatOneScannerDoesNotKnowIsNoted) {
    const InventoryDiff diff =
        compare(disk("/dev/sda", "A"), disk("/dev/sda", "A", element("Multipath", "true")));
    EXPECT_TRUE(diff.groups.empty());
    EXPECT_EQ(std::vector<std::string>{"not compared: Storage Multipath (only in one of the inventories)"},
              diff.notes);
}

TEST(InventoryDiff, GroupsThatAreNotComparedAreNotedInOneLineByReason) {
    const std::string requested = element("GroupsRequested", "Storage;Printer;Modem;Memory;Monitor");
    const std::string read = disk("/dev/sda", "A") + element("Fan", element("Id", "1")) +
                             element("Pump", element("Id", "1")) + scanInfo(true, requested);
    const std::string failed =
        disk("/dev/sda", "A") +
        scanInfo(true, requested + element("GroupsUnread", "Printer=timeout;Memory=too-large;Modem=timeout") +
                           element("GroupsPartial", "Storage=too-large"));
    const InventoryDiff diff = compare(read, failed);
    EXPECT_TRUE(diff.groups.empty());
    ASSERT_EQ(2U, diff.notes.size());
    EXPECT_TRUE(diff.notes[0].starts_with("not compared: ")) << diff.notes[0];
    EXPECT_NE(std::string::npos, diff.notes[0].find("Printer, Modem (unread in f: it took too long)"))
        << diff.notes[0];
    EXPECT_NE(std::string::npos, diff.notes[0].find("Fan, Pump (only in f)")) << diff.notes[0];
    EXPECT_TRUE(diff.notes[1].starts_with("compared as far as they were read: Storage (partial in f"))
        << diff.notes[1];
}

TEST(InventoryDiff, GroupsOfAnotherScannerAreComparedByTheirFirstField) {
    const auto fan = [](const std::string& id, const std::string& maker) {
        return element("Fan", element("Id", id) + element("Maker", maker));
    };
    EXPECT_EQ("Fan\n    2\n      Maker: B -> C\n",
              differences(fan("1", "A") + fan("2", "B"), fan("2", "C") + fan("1", "A")));
}

TEST(InventoryDiff, ControlCharactersAreNotPrinted) {
    EXPECT_EQ("Storage\n    /dev/sda, \\u202e\n      Model: A -> \\u202e\n",
              differences(disk("/dev/sda", "A"), disk("/dev/sda", "\xe2\x80\xae")));
}

}  // namespace
}  // namespace zavcli
