#include "hw/HWGroups.h"

namespace zav {

const HWGroup HWGroups[] = {
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
    {kGroupSlots, nullptr, nullptr},
};

const HWGroup* nextGroup(const HWGroup* row) {
    const HWGroup* const next = row == nullptr ? HWGroups : row + 1;
    return next->id == kGroupSlots || next->displayName == nullptr ? nullptr : next;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): as its callers know it
int HW_getGroupId(std::wstring name) {
    for (const HWGroup* row = nextGroup(nullptr); row != nullptr; row = nextGroup(row)) {
        if (name == row->xmlName) return row->id;
    }
    return -1;
}

const HWGroup* findGroup(int id) {
    for (const HWGroup* row = nextGroup(nullptr); row != nullptr; row = nextGroup(row)) {
        if (row->id == id) return row;
    }
    return nullptr;
}

}  // namespace zav
