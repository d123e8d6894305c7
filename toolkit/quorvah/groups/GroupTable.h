// The table of all hardware groups.
#pragma once

#include <span>
#include <string_view>

#include "toolkit/quorvah/report/Group.h"

namespace toolkit::quorvah {

// Kinds of machines other than this one. Null where this one is of that kind.
#if defined(__powerpc__) || defined(__s390__)
inline constexpr const char* kOtherThanPowerAndS390 = nullptr;
#else
inline constexpr const char* kOtherThanPowerAndS390 = "other-processor";
#endif
inline constexpr const char* kWindows = "windows";
inline constexpr const char* kOtherSystem = "other-system";

// One row per group, in the order of the group numbers in zav.h:
//   GATHERED(Name)                         groups/Name.cpp defines kName
//   UNSUPPORTED(Name, display name)        no file yet; write groups/Name.cpp and turn the row into GATHERED(Name)
//   ELSEWHERE(Name, display name, reason)  no machine of this kind has the group
// clang-format off
#define QUORVAH_GROUPS(GATHERED, UNSUPPORTED, ELSEWHERE)                          \
    GATHERED(ComponentID)                                                         \
    GATHERED(Processor)                                                           \
    GATHERED(Memory)                                                              \
    GATHERED(OperatingSystem)                                                     \
    GATHERED(Storage)                                                             \
    GATHERED(IPAddress)                                                           \
    GATHERED(NetworkAdapter)                                                      \
    GATHERED(DiskPartition)                                                       \
    UNSUPPORTED(PointingDevice, "Pointing Device")                                \
    UNSUPPORTED(Keyboard, "Keyboard")                                             \
    GATHERED(LogicalDrive)                                                        \
    ELSEWHERE(IPXAddress, "IPX Address", kOtherSystem)                            \
    UNSUPPORTED(Video, "Video")                                                   \
    UNSUPPORTED(Printer, "Printer")                                               \
    GATHERED(Regional)                                                            \
    UNSUPPORTED(SystemEnclosure, "System Enclosure")                              \
    GATHERED(UNIXSystemParams)                                                    \
    GATHERED(ScanInfo)                                                            \
    UNSUPPORTED(PCSystemParams, "PC System Params")                               \
    UNSUPPORTED(SerialPort, "Serial Port")                                        \
    UNSUPPORTED(ParallelPort, "Parallel Port")                                    \
    UNSUPPORTED(SMBIOS, "SMBIOS")                                                 \
    GATHERED(SoftwarePackages)                                                    \
    UNSUPPORTED(InstalledPatches, "Installed Patches")                            \
    UNSUPPORTED(Partition, "Partition")                                           \
    GATHERED(USBDevice)                                                           \
    GATHERED(PCIDevice)                                                           \
    UNSUPPORTED(Modem, "Modem")                                                   \
    UNSUPPORTED(MemoryModules, "Memory Modules")                                  \
    UNSUPPORTED(Monitor, "Monitor")                                               \
    ELSEWHERE(Lpar, "Lpar", kOtherThanPowerAndS390)                               \
    UNSUPPORTED(ServiceInfo, "Service Info")                                      \
    UNSUPPORTED(UserAccountInfo, "User Account Info")                             \
    UNSUPPORTED(LastLoggedUser, "Last Logged User")                               \
    UNSUPPORTED(ScreenSaverInfo, "Screen Saver Info")                             \
    ELSEWHERE(OperatingSystemCSIDL, "Operating System CSIDL", kWindows)           \
    ELSEWHERE(WinCluster, "WinCluster", kWindows)                                 \
    ELSEWHERE(WinClusterNode, "WinClusterNode", kWindows)                         \
    ELSEWHERE(VEQCluster, "VEQCluster", kOtherSystem)                             \
    ELSEWHERE(VEQClusterNode, "VEQClusterNode", kOtherSystem)                     \
    GATHERED(PhysicalProcessor)                                                   \
    UNSUPPORTED(HostComponentID, "HostComponentID")                               \
    UNSUPPORTED(CpuMeter, "CpuMeter")                                             \
    UNSUPPORTED(UnixCpuMeter, "UnixCpuMeter")                                     \
    ELSEWHERE(WinCpuMeter, "WinCpuMeter", kWindows)                               \
    UNSUPPORTED(VirtualMachine, "VirtualMachine")                                 \
    GATHERED(VirtualMachineGuest)                                                 \
    GATHERED(IPv6Address)
// clang-format on

// The gathered groups: kComponentID, kProcessor and so on.
#define DECLARE_GROUP(name) extern const Group k##name;
#define DECLARE_NOTHING(...)
QUORVAH_GROUPS(DECLARE_GROUP, DECLARE_NOTHING, DECLARE_NOTHING)
#undef DECLARE_GROUP
#undef DECLARE_NOTHING

// All groups in the order of the table.
std::span<const Group* const> allGroups();

// The group with this display name or XML name; null if there is none.
const Group* findGroup(std::string_view name);

}  // namespace toolkit::quorvah
