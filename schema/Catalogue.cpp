#include "schema/Catalogue.h"

#include <algorithm>

#include "schema/groups/Absent.h"
#include "schema/groups/ComponentID.h"
#include "schema/groups/CpuMeter.h"
#include "schema/groups/DiskPartition.h"
#include "schema/groups/HostComponentID.h"
#include "schema/groups/IPAddress.h"
#include "schema/groups/IPXAddress.h"
#include "schema/groups/IPv6Address.h"
#include "schema/groups/InstalledPatches.h"
#include "schema/groups/Keyboard.h"
#include "schema/groups/LastLoggedUser.h"
#include "schema/groups/LogicalDrive.h"
#include "schema/groups/Lpar.h"
#include "schema/groups/Memory.h"
#include "schema/groups/MemoryModules.h"
#include "schema/groups/Modem.h"
#include "schema/groups/Monitor.h"
#include "schema/groups/NetworkAdapter.h"
#include "schema/groups/OperatingSystem.h"
#include "schema/groups/PCIDevice.h"
#include "schema/groups/PCSystemParams.h"
#include "schema/groups/ParallelPort.h"
#include "schema/groups/Partition.h"
#include "schema/groups/PhysicalProcessor.h"
#include "schema/groups/PointingDevice.h"
#include "schema/groups/Printer.h"
#include "schema/groups/Processor.h"
#include "schema/groups/Regional.h"
#include "schema/groups/SMBIOS.h"
#include "schema/groups/ScanInfo.h"
#include "schema/groups/ScreenSaverInfo.h"
#include "schema/groups/SerialPort.h"
#include "schema/groups/ServiceInfo.h"
#include "schema/groups/SoftwarePackages.h"
#include "schema/groups/Storage.h"
#include "schema/groups/SystemEnclosure.h"
#include "schema/groups/UNIXSystemParams.h"
#include "schema/groups/USBDevice.h"
#include "schema/groups/UnixCpuMeter.h"
#include "schema/groups/UserAccountInfo.h"
#include "schema/groups/Video.h"
#include "schema/groups/VirtualMachine.h"
#include "schema/groups/VirtualMachineGuest.h"

namespace schema {

namespace {

constexpr const Group* kGroups[] = {
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
    return kGroups;
}

const Group* findGroup(std::string_view name) {
    const auto* const found = std::ranges::find_if(
        kGroups, [name](const Group* group) { return name == group->name || name == group->element; });
    return found == std::end(kGroups) ? nullptr : *found;
}

const Field* findField(const Group& group, std::string_view name) {
    const auto found = std::ranges::find(group.fields, name, &Field::name);
    return found == group.fields.end() ? nullptr : &*found;
}

}  // namespace schema
