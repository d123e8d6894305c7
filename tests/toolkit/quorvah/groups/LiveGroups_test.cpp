// Devices, adapters, addresses and drives of this machine, as the usual programs show them.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/machine/files/MountInfo.h"
#include "toolkit/quorvah/sources/FileSystemUsage.h"

namespace toolkit::quorvah {
namespace {

using Rows = std::vector<std::string>;

Rows sorted(Rows rows) {
    std::sort(rows.begin(), rows.end());
    return rows;
}

// The named fields of every instance, tabs between them, sorted.
Rows rowsOf(const Report& report, const std::vector<std::string>& fields) {
    Rows rows;
    for (const Instance& instance : report.instances()) {
        std::string row;
        for (const std::string& field : fields) row += (row.empty() ? "" : "\t") + instance.get(field);
        rows.push_back(row);
    }
    return sorted(rows);
}

TEST(IPAddressLive, AddressesAreThoseOfIp) {
    const Rows theirs = linesOf(
        "ip -j addr | jq -r '.[] | .ifname as $name | .addr_info[] | select(.family == \"inet\") | "
        "[.local, $name, (.prefixlen | tostring), .broadcast // \"\", .address // \"\", .scope, .label // "
        "\"\"] | @tsv'");
    EXPECT_FALSE(theirs.empty());
    EXPECT_EQ(sorted(theirs),
              rowsOf(gatheredLive("IPAddress"), {"IPv4Address", "Name", "PrefixLength", "BroadcastAddress",
                                                 "PeerAddress", "Scope", "Label"}));
}

TEST(IPAddressLive, GatewaysAreThoseOfIpRoute) {
    std::map<std::string, std::string> gateways;
    for (const std::string& line :
         linesOf("ip -j -4 route show default | jq -r 'sort_by(-(.metric // 0)) | .[] | "
                 "select(.gateway) | [.dev, .gateway] | @tsv'")) {
        const Rows fields = fieldsOf(line);
        gateways[fields[0]] = fields[1];  // the last one has the smallest metric
    }
    const Report report = gatheredLive("IPAddress");
    EXPECT_FALSE(report.instances().empty());
    for (const Instance& address : report.instances()) {
        EXPECT_EQ(gateways[address.get("Name")], address.get("Gateway")) << joined(address);
    }
}

TEST(IPAddressLive, TheFilesOfTheKernelGiveTheSameAddresses) {
    EXPECT_EQ(rowsOf(gatheredLive("IPAddress"), {"IPv4Address", "PrefixLength"}),
              rowsOf(gatheredBelow("IPAddress", "/"), {"IPv4Address", "PrefixLength"}));
}

TEST(IPv6AddressLive, AddressesAreThoseOfIp) {
    const Rows theirs = linesOf(
        "ip -j addr | jq -r '.[] | .ifname as $name | .addr_info[] | select(.family == \"inet6\") | "
        "[.local, $name, (.prefixlen | tostring), .scope, (.temporary // false | tostring), "
        "(.deprecated // false | tostring), (.tentative // false | tostring)] | @tsv'");
    EXPECT_EQ(sorted(theirs),
              rowsOf(gatheredLive("IPv6Address"), {"IPv6Address", "Name", "PrefixLength", "Scope",
                                                   "Temporary", "Deprecated", "Tentative"}));
}

TEST(IPv6AddressLive, TheFilesOfTheKernelGiveTheSameAddresses) {
    const Rows live =
        rowsOf(gatheredLive("IPv6Address"), {"IPv6Address", "Name", "PrefixLength", "AddressOrigin",
                                             "IPv6AddressType", "Scope", "Gateway", "MacAddress"});
    EXPECT_EQ(live, rowsOf(gatheredBelow("IPv6Address", "/"),
                           {"IPv6Address", "Name", "PrefixLength", "AddressOrigin", "IPv6AddressType",
                            "Scope", "Gateway", "MacAddress"}));
}

TEST(NetworkAdapterLive, AdaptersAreThoseOfIpLink) {
    const Rows theirs = linesOf(
        "ip -j link | jq -r '.[] | [.ifname, (.mtu | tostring), "
        "(if .address == \"00:00:00:00:00:00\" then \"\" else .address // \"\" end), "
        "(if (.flags | index(\"UP\")) then \"Enabled\" else \"Disabled\" end), "
        "(.operstate | ascii_downcase | if . == \"unknown\" then \"\" else . end), .master // \"\"] | @tsv'");
    EXPECT_FALSE(theirs.empty());
    EXPECT_EQ(sorted(theirs), rowsOf(gatheredLive("NetworkAdapter"),
                                     {"DeviceID", "ActiveMaximumTransmissionUnit", "NetworkAddresses",
                                      "EnabledState", "OperationalStatus", "Master"}));
}

// "Key:\tvalue" lines of one device each.
std::vector<std::map<std::string, std::string>> lspciDevices() {
    std::vector<std::map<std::string, std::string>> devices(1);
    for (const std::string& line : linesOf("lspci -Dvmmk")) {
        const std::size_t tab = line.find(":\t");
        if (line.empty()) {
            devices.emplace_back();
        } else if (tab != std::string::npos) {
            devices.back()[line.substr(0, tab)] = line.substr(tab + 2);
        }
    }
    while (!devices.empty() && devices.back().empty()) devices.pop_back();
    return devices;
}

// lspci writes ids in place of the names that it does not know.
std::string nameOf(const std::string& name) {
    if (name.starts_with("Device ") || name.starts_with("Vendor ") || name.starts_with("Class ")) return {};
    return name.substr(0, name.find(" ["));
}

TEST(PCIDeviceLive, NamesAndDriversAreThoseOfLspci) {
    const Report report = gatheredLive("PCIDevice");
    const auto devices = lspciDevices();
    EXPECT_EQ(devices.size(), report.instances().size());
    for (auto device : devices) {
        const Instance& ours = instanceOf(report, device["Slot"]);
        EXPECT_EQ(nameOf(device["Class"]), ours.get("ClassName")) << device["Slot"];
        EXPECT_EQ(nameOf(device["Vendor"]), ours.get("Manufacturer")) << device["Slot"];
        EXPECT_EQ(nameOf(device["Device"]), ours.get("Name")) << device["Slot"];
        EXPECT_EQ(nameOf(device["SDevice"]), ours.get("SubsystemName")) << device["Slot"];
        EXPECT_EQ(device["Driver"], ours.get("DriverName")) << device["Slot"];
        EXPECT_EQ(device["NUMANode"], ours.get("NumaNode")) << device["Slot"];
        EXPECT_EQ(device["IOMMUGroup"], ours.get("IommuGroup")) << device["Slot"];
    }
}

// 0000:00:03.0 "0200" "1af4" "1041" -r01 -p00 "1af4" "1041"
TEST(PCIDeviceLive, IdsAreThoseOfLspci) {
    const Report report = gatheredLive("PCIDevice");
    for (const std::string& line : linesOf("lspci -Dnmm")) {
        std::string ids;
        for (const Instance& ours : report.instances()) {
            if (!line.starts_with(ours.get("DeviceID") + " ")) continue;
            const std::string& code = ours.get("ClassCode");
            ids = ours.get("DeviceID") + " \"" + code.substr(0, 4) + "\" \"" + ours.get("VendorID") +
                  "\" \"" + ours.get("PCIDeviceID") + "\"";
            if (ours.get("RevisionID") != "00") ids += " -r" + ours.get("RevisionID");
            ids += " -p" + code.substr(4);
            ids += " \"" + ours.get("SubsystemVendorID") + "\" \"" + ours.get("SubsystemID") + "\"";
        }
        EXPECT_EQ(line, ids);
    }
}

TEST(USBDeviceLive, DevicesAreThoseOfLsusb) {
    Rows theirs;
    // Without any bus lsusb ends with an error.
    for (const std::string& line : linesOf("lsusb || test ! -e /sys/bus/usb/devices")) {
        const std::size_t id = line.find(": ID ");
        if (id != std::string::npos) theirs.push_back(line.substr(id + 5, 9));
    }
    Rows ours;
    const Report report = gatheredLive("USBDevice");
    for (const Instance& device : report.instances())
        ours.push_back(device.get("VendorId") + ":" + device.get("ProductId"));
    EXPECT_EQ(sorted(theirs), sorted(ours));
}

TEST(MountInfoLive, EveryMountIsAsFindmntShowsIt) {
    const Rows theirs = linesOf(
        "findmnt -J --list -v -o TARGET,SOURCE,FSTYPE,MAJ:MIN,FSROOT | jq -r '.filesystems[] | "
        "[.target, .source // \"\", .fstype, .[\"maj:min\"], .fsroot] | join(\"|\")'");
    EXPECT_FALSE(theirs.empty());
    Rows ours;
    for (const Mount& mount : readMountInfo(Root().read("/proc/self/mountinfo").value_or(""))) {
        ours.push_back(mount.mountPoint + "|" + mount.source + "|" + mount.type + "|" + mount.device + "|" +
                       mount.root);
    }
    EXPECT_EQ(sorted(theirs), sorted(ours));
}

TEST(LogicalDriveLive, SizesAreThoseOfDf) {
    const Report report = gatheredLive("LogicalDrive");
    EXPECT_FALSE(report.instances().empty());
    EXPECT_EQ("", report.reason());
    for (const Instance& drive : report.instances()) {
        if (drive.get("Remote") != "false" || drive.get("FileSystemType") == "fuseblk") continue;
        const Rows lines =
            linesOf("df -B1 --output=size,itotal,fstype '" + drive.get("Root") + "' | tail -n 1");
        ASSERT_EQ(1U, lines.size());
        Rows words;
        for (const std::string& word : fieldsOf(lines[0], ' ')) {
            if (!word.empty()) words.push_back(word);
        }
        ASSERT_EQ(3U, words.size()) << lines[0];
        EXPECT_EQ(words[0], drive.get("FileSystemSize"));
        EXPECT_EQ(words[1], drive.get("InodesTotal"));
        EXPECT_EQ(words[2], drive.get("FileSystemType"));
    }
}

TEST(LogicalDriveLive, OptionsAreThoseOfFindmnt) {
    const Report report = gatheredLive("LogicalDrive");
    for (const Instance& drive : report.instances()) {
        const Rows lines = linesOf("findmnt -n -v -o OPTIONS,SOURCE -J --target '" + drive.get("Root") +
                                   "' | jq -r '.filesystems[-1] | [.options, .source] | @tsv'");
        ASSERT_EQ(1U, lines.size());
        EXPECT_EQ(lines[0], drive.get("MountOptions") + "\t" + drive.get("Name"));
    }
}

TEST(FileSystemUsage, PathsThatAreNotThereHaveNoAnswer) {
    const UsageAnswers answers = askUsage({"/", "/no/such/place", "/"});
    ASSERT_EQ(3U, answers.usages.size());
    EXPECT_TRUE(answers.complete);
    ASSERT_TRUE(answers.usages[0].has_value());
    EXPECT_FALSE(answers.usages[1].has_value());
    ASSERT_TRUE(answers.usages[2].has_value());
    EXPECT_EQ(answers.usages[0]->size, answers.usages[2]->size);
    EXPECT_GT(answers.usages[0]->size, 0U);
}

TEST(FileSystemUsage, NoPathsNeedNoAnswer) {
    const UsageAnswers answers = askUsage({});
    EXPECT_TRUE(answers.complete);
    EXPECT_TRUE(answers.usages.empty());
}

}  // namespace
}  // namespace toolkit::quorvah
