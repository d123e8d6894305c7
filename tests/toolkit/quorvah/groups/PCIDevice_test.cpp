#include <gtest/gtest.h>

#include <map>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

TEST(PCIDevice, EveryFieldComesFromTheTree) {
    const GroupData data = gatheredTree(kPCIDevice, "workstation");
    EXPECT_EQ((std::vector<std::string>{"0000:00:02.1", "0000:00:14.0", "0000:00:1f.6", "0000:03:00.0",
                                        "10000:e0:06.0"}),
              keysOf(data));
    expectAll(data.group(), instanceOf(data, "0000:00:1f.6"),
              {{"DeviceID", "0000:00:1f.6"},
               {"Name", "Gigabit Adapter"},
               {"Manufacturer", "Chip Maker"},
               {"BusNumber", "0"},
               {"DeviceNumber", "31"},
               {"FunctionNumber", "6"},
               {"PCIDeviceID", "15bc"},
               {"VendorID", "8086"},
               {"SubsystemID", "2292"},
               {"SubsystemVendorID", "17aa"},
               {"RevisionID", "10"},
               {"ClassCode", "020000"},
               {"ClassName", "Ethernet controller"},
               {"DriverName", "e1000e"},
               {"IommuGroup", "14"}});
    expectAll(data.group(), instanceOf(data, "0000:03:00.0"),
              {{"DeviceID", "0000:03:00.0"},
               {"Name", "Fast SSD"},
               {"Manufacturer", "Disk Maker"},
               {"BusNumber", "3"},
               {"DeviceNumber", "0"},
               {"FunctionNumber", "0"},
               {"PCIDeviceID", "a808"},
               {"VendorID", "144d"},
               {"SubsystemID", "a801"},
               {"SubsystemVendorID", "144d"},
               {"RevisionID", "00"},
               {"ClassCode", "010802"},
               {"ClassName", "Non-Volatile memory controller"},
               {"SubsystemName", "Fast SSD Plus"},
               {"DriverName", "nvme"},
               {"NumaNode", "0"},
               {"CurrentLinkSpeed", "8.0 GT/s PCIe"},
               {"MaxLinkSpeed", "16.0 GT/s PCIe"},
               {"CurrentLinkWidth", "4"},
               {"MaxLinkWidth", "4"},
               {"PhysicalSlot", "7"},
               {"Removable", "true"}});
}

TEST(PCIDevice, UnknownLinkPropertiesAreEmpty) {
    const GroupData data = gatheredTree(kPCIDevice, "workstation");
    expectAll(data.group(), instanceOf(data, "0000:00:14.0"),
              {{"DeviceID", "0000:00:14.0"},
               {"Name", "USB Host Controller"},
               {"Manufacturer", "Chip Maker"},
               {"BusNumber", "0"},
               {"DeviceNumber", "20"},
               {"FunctionNumber", "0"},
               {"PCIDeviceID", "a36d"},
               {"VendorID", "8086"},
               {"SubsystemID", "a36d"},
               {"SubsystemVendorID", "8086"},
               {"ClassCode", "0c0330"},
               {"ClassName", "USB controller"},
               {"SubsystemName", "USB Host Controller"},
               {"Removable", "false"}});
}

TEST(PCIDevice, TheRevisionOfAnOldTreeComesFromTheConfigurationSpace) {
    const GroupData data = gatheredTree(kPCIDevice, "workstation");
    expectAll(data.group(), instanceOf(data, "10000:e0:06.0"),
              {{"DeviceID", "10000:e0:06.0"},
               {"Manufacturer", "Chip Maker"},
               {"BusNumber", "224"},
               {"DeviceNumber", "6"},
               {"FunctionNumber", "0"},
               {"PCIDeviceID", "1234"},
               {"VendorID", "8086"},
               {"RevisionID", "ab"},
               {"ClassCode", "060400"},
               {"ClassName", "Bridge"}});
}

TEST(PCIDevice, AVirtualFunctionNamesItsParent) {
    const GroupData data = gatheredTree(kPCIDevice, "workstation");
    EXPECT_EQ("0000:00:1f.6", instanceOf(data, "0000:00:02.1").get("SriovParent"));
}

// The lines "Key:\tvalue" of each device.
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

// Empty if lspci prints an id because it does not know the name.
std::string nameOf(const std::string& name) {
    if (name.starts_with("Device ") || name.starts_with("Vendor ") || name.starts_with("Class ")) return {};
    return name.substr(0, name.find(" ["));
}

TEST(PCIDeviceLive, NamesAndDriversMatchLspci) {
    const GroupData data = gatheredLive(kPCIDevice);
    const auto devices = lspciDevices();
    EXPECT_EQ(devices.size(), data.instances().size());
    for (auto device : devices) {
        const Instance& ours = instanceOf(data, device["Slot"]);
        EXPECT_EQ(nameOf(device["Class"]), ours.get("ClassName")) << device["Slot"];
        EXPECT_EQ(nameOf(device["Vendor"]), ours.get("Manufacturer")) << device["Slot"];
        EXPECT_EQ(nameOf(device["Device"]), ours.get("Name")) << device["Slot"];
        EXPECT_EQ(nameOf(device["SDevice"]), ours.get("SubsystemName")) << device["Slot"];
        EXPECT_EQ(device["Driver"], ours.get("DriverName")) << device["Slot"];
        EXPECT_EQ(device["NUMANode"], ours.get("NumaNode")) << device["Slot"];
        EXPECT_EQ(device["IOMMUGroup"], ours.get("IommuGroup")) << device["Slot"];
        EXPECT_EQ(device["PhySlot"], ours.get("PhysicalSlot")) << device["Slot"];
    }
}

// 0000:00:03.0 "0200" "1af4" "1041" -r01 -p00 "1af4" "1041"
TEST(PCIDeviceLive, IdsMatchLspci) {
    const GroupData data = gatheredLive(kPCIDevice);
    for (const std::string& line : linesOf("lspci -Dnmm")) {
        std::string ids;
        for (const Instance& ours : data.instances()) {
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

}  // namespace
}  // namespace toolkit::quorvah
