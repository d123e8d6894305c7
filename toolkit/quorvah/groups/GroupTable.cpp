#include "toolkit/quorvah/groups/GroupTable.h"

#include <algorithm>

namespace toolkit::quorvah {

extern const Group kLogicalDrive;
extern const Group kIPv6Address;
extern const Group kIPAddress;
extern const Group kNetworkAdapter;
extern const Group kUSBDevice;
extern const Group kPCIDevice;
extern const Group kSoftwarePackages;

namespace {

// The groups that are known by name only.
constexpr Group elsewhere(const char* displayName, const char* xmlName, const char* where) {
    return {displayName, xmlName, {}, nullptr, false, {}, where};
}

// Logical partitions of hardware are a matter of these machines.
#if defined(__powerpc__) || defined(__s390__)
constexpr const char* kWithoutPartitions = nullptr;
#else
constexpr const char* kWithoutPartitions = "other-processor";
#endif

constexpr Group kPointingDevice{"Pointing Device", "PointingDevice", {}, nullptr};
constexpr Group kKeyboard{"Keyboard", "Keyboard", {}, nullptr};
constexpr Group kIPXAddress = elsewhere("IPX Address", "IPXAddress", "other-system");
constexpr Group kVideo{"Video", "Video", {}, nullptr};
constexpr Group kPrinter{"Printer", "Printer", {}, nullptr};
constexpr Group kSystemEnclosure{"System Enclosure", "SystemEnclosure", {}, nullptr};
constexpr Group kPCSystemParams{"PC System Params", "PCSystemParams", {}, nullptr};
constexpr Group kSerialPort{"Serial Port", "SerialPort", {}, nullptr};
constexpr Group kParallelPort{"Parallel Port", "ParallelPort", {}, nullptr};
constexpr Group kSMBIOS{"SMBIOS", "SMBIOS", {}, nullptr};
constexpr Group kInstalledPatches{"Installed Patches", "InstalledPatches", {}, nullptr};
constexpr Group kPartition{"Partition", "Partition", {}, nullptr};
constexpr Group kModem{"Modem", "Modem", {}, nullptr};
constexpr Group kMemoryModules{"Memory Modules", "MemoryModules", {}, nullptr};
constexpr Group kMonitor{"Monitor", "Monitor", {}, nullptr};
constexpr Group kLpar = elsewhere("Lpar", "Lpar", kWithoutPartitions);
constexpr Group kServiceInfo{"Service Info", "ServiceInfo", {}, nullptr};
constexpr Group kUserAccountInfo{"User Account Info", "UserAccountInfo", {}, nullptr};
constexpr Group kLastLoggedUser{"Last Logged User", "LastLoggedUser", {}, nullptr};
constexpr Group kScreenSaverInfo{"Screen Saver Info", "ScreenSaverInfo", {}, nullptr};
constexpr Group kOperatingSystemCSIDL =
    elsewhere("Operating System CSIDL", "OperatingSystemCSIDL", "windows");
constexpr Group kWinCluster = elsewhere("WinCluster", "WinCluster", "windows");
constexpr Group kWinClusterNode = elsewhere("WinClusterNode", "WinClusterNode", "windows");
constexpr Group kVEQCluster = elsewhere("VEQCluster", "VEQCluster", "other-system");
constexpr Group kVEQClusterNode = elsewhere("VEQClusterNode", "VEQClusterNode", "other-system");
constexpr Group kHostComponentID{"HostComponentID", "HostComponentID", {}, nullptr};
constexpr Group kCpuMeter{"CpuMeter", "CpuMeter", {}, nullptr};
constexpr Group kUnixCpuMeter{"UnixCpuMeter", "UnixCpuMeter", {}, nullptr};
constexpr Group kWinCpuMeter = elsewhere("WinCpuMeter", "WinCpuMeter", "windows");
constexpr Group kVirtualMachine{"VirtualMachine", "VirtualMachine", {}, nullptr};

constexpr const Group* kTable[] = {
    &kComponentID,
    &kProcessor,
    &kMemory,
    &kOperatingSystem,
    &kStorage,
    &kIPAddress,
    &kNetworkAdapter,
    &kDiskPartition,
    &kPointingDevice,
    &kKeyboard,
    &kLogicalDrive,
    &kIPXAddress,
    &kVideo,
    &kPrinter,
    &kRegional,
    &kSystemEnclosure,
    &kUNIXSystemParams,
    &kScanInfo,
    &kPCSystemParams,
    &kSerialPort,
    &kParallelPort,
    &kSMBIOS,
    &kSoftwarePackages,
    &kInstalledPatches,
    &kPartition,
    &kUSBDevice,
    &kPCIDevice,
    &kModem,
    &kMemoryModules,
    &kMonitor,
    &kLpar,
    &kServiceInfo,
    &kUserAccountInfo,
    &kLastLoggedUser,
    &kScreenSaverInfo,
    &kOperatingSystemCSIDL,
    &kWinCluster,
    &kWinClusterNode,
    &kVEQCluster,
    &kVEQClusterNode,
    &kPhysicalProcessor,
    &kHostComponentID,
    &kCpuMeter,
    &kUnixCpuMeter,
    &kWinCpuMeter,
    &kVirtualMachine,
    &kVirtualMachineGuest,
    &kIPv6Address,
};

}  // namespace

std::span<const Group* const> allGroups() {
    return kTable;
}

const Group* findGroup(std::string_view name) {
    const auto* const found = std::ranges::find_if(
        kTable, [name](const Group* group) { return name == group->displayName || name == group->xmlName; });
    return found == std::end(kTable) ? nullptr : *found;
}

}  // namespace toolkit::quorvah
