#include "hw/HWGroups.h"

#include <gtest/gtest.h>

#include <vector>

namespace zav {
namespace {

struct Row {
    int id;
    std::string displayName;
    std::wstring xmlName;

    bool operator==(const Row&) const = default;
};

// The groups as the scanners know them.
const std::vector<Row> catalogue = {
    {1, "ComponentID", L"ComponentID"},
    {2, "Processor", L"Processor"},
    {3, "Memory", L"Memory"},
    {4, "Operating System", L"OperatingSystem"},
    {5, "Storage", L"Storage"},
    {6, "IP Address", L"IPAddress"},
    {7, "Network Adapter", L"NetworkAdapter"},
    {8, "Disk Partition", L"DiskPartition"},
    {9, "Pointing Device", L"PointingDevice"},
    {10, "Keyboard", L"Keyboard"},
    {11, "Logical Drive", L"LogicalDrive"},
    {12, "IPX Address", L"IPXAddress"},
    {13, "Video", L"Video"},
    {14, "Printer", L"Printer"},
    {15, "Regional", L"Regional"},
    {16, "System Enclosure", L"SystemEnclosure"},
    {19, "UNIX System Params", L"UNIXSystemParams"},
    {20, "Scan Info", L"ScanInfo"},
    {21, "PC System Params", L"PCSystemParams"},
    {22, "Serial Port", L"SerialPort"},
    {23, "Parallel Port", L"ParallelPort"},
    {24, "SMBIOS", L"SMBIOS"},
    {25, "Software Packages", L"SoftwarePackages"},
    {26, "Installed Patches", L"InstalledPatches"},
    {27, "Partition", L"Partition"},
    {28, "USB Device", L"USBDevice"},
    {29, "PCI Device", L"PCIDevice"},
    {30, "Modem", L"Modem"},
    {31, "Memory Modules", L"MemoryModules"},
    {32, "Monitor", L"Monitor"},
    {34, "Lpar", L"Lpar"},
    {35, "Service Info", L"ServiceInfo"},
    {36, "User Account Info", L"UserAccountInfo"},
    {37, "Last Logged User", L"LastLoggedUser"},
    {38, "Screen Saver Info", L"ScreenSaverInfo"},
    {39, "Operating System CSIDL", L"OperatingSystemCSIDL"},
    {40, "WinCluster", L"WinCluster"},
    {41, "WinClusterNode", L"WinClusterNode"},
    {42, "VEQCluster", L"VEQCluster"},
    {43, "VEQClusterNode", L"VEQClusterNode"},
    {44, "PhysicalProcessor", L"PhysicalProcessor"},
    {45, "HostComponentID", L"HostComponentID"},
    {46, "CpuMeter", L"CpuMeter"},
    {47, "UnixCpuMeter", L"UnixCpuMeter"},
    {48, "WinCpuMeter", L"WinCpuMeter"},
    {49, "VirtualMachine", L"VirtualMachine"},
    {50, "VirtualMachineGuest", L"VirtualMachineGuest"},
    {51, "IPv6 Address", L"IPv6Address"},
};

std::vector<Row> walk() {
    std::vector<Row> rows;
    for (const HWGroup* row = nextGroup(nullptr); row != nullptr; row = nextGroup(row)) {
        rows.push_back({row->id, row->displayName, row->xmlName});
    }
    return rows;
}

TEST(HWGroups, IterationVisitsAllGroupsInOrder) {
    ASSERT_EQ(catalogue.size(), 48U);
    EXPECT_EQ(walk(), catalogue);
}

TEST(HWGroups, TheLastRowIsTheTerminator) {
    const HWGroup& terminator = HWGroups[48];
    EXPECT_EQ(terminator.id, 52);
    EXPECT_EQ(terminator.displayName, nullptr);
    EXPECT_EQ(terminator.xmlName, nullptr);
}

TEST(HWGroups, BothNamesOfAGroupDifferOnlyInBlanks) {
    for (const Row& row : catalogue) {
        std::wstring withoutBlanks;
        for (const char character : row.displayName) {
            if (character != ' ') withoutBlanks += static_cast<wchar_t>(character);
        }
        EXPECT_EQ(withoutBlanks, row.xmlName);
    }
}

TEST(HWGroups, EveryOutputNameLeadsToItsId) {
    for (const Row& row : catalogue) EXPECT_EQ(HW_getGroupId(row.xmlName), row.id);
}

TEST(HWGroups, AnUnknownNameIsNotFound) {
    for (const wchar_t* const name :
         {L"Operating System", L"operatingsystem", L"OPERATINGSYSTEM", L"", L"OperatingSyste",
          L"OperatingSystems", L" OperatingSystem", L"OperatingSystem ", L"IPv6 Address", L"(null)"}) {
        EXPECT_EQ(HW_getGroupId(name), -1) << std::wstring(name);
    }
    EXPECT_EQ(HW_getGroupId(std::wstring(L"Memory\0", 7)), -1);
}

TEST(HWGroups, EveryIdOfTheCatalogueFindsItsRow) {
    for (const Row& row : catalogue) {
        const HWGroup* const found = findGroup(row.id);
        ASSERT_NE(found, nullptr) << row.id;
        EXPECT_EQ(found->xmlName, row.xmlName);
    }
}

TEST(HWGroups, AnUnknownIdIsNotFound) {
    for (const int id : {-52, -1, 0, 17, 18, 33, 52, 53, 1000}) EXPECT_EQ(findGroup(id), nullptr) << id;
}

TEST(HWGroups, TheRangeOfIdsIncludesTheGaps) {
    for (int id = 1; id <= 51; ++id) EXPECT_TRUE(isGroupId(id)) << id;
    for (const int id : {-1, 0, 52}) EXPECT_FALSE(isGroupId(id)) << id;
}

}  // namespace
}  // namespace zav
