// The table of all hardware groups.
#pragma once

#include <span>
#include <string_view>

#include "toolkit/quorvah/report/Group.h"

namespace toolkit::quorvah {

// Kinds of machines other than this one.
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
    GATHERED(PointingDevice)                                                      \
    GATHERED(Keyboard)                                                            \
    GATHERED(LogicalDrive)                                                        \
    GATHERED(IPXAddress)                                                          \
    GATHERED(Video)                                                               \
    GATHERED(Printer)                                                             \
    GATHERED(Regional)                                                            \
    GATHERED(SystemEnclosure)                                                     \
    GATHERED(UNIXSystemParams)                                                    \
    GATHERED(ScanInfo)                                                            \
    GATHERED(PCSystemParams)                                                      \
    GATHERED(SerialPort)                                                          \
    GATHERED(ParallelPort)                                                        \
    GATHERED(SMBIOS)                                                              \
    GATHERED(SoftwarePackages)                                                    \
    GATHERED(InstalledPatches)                                                    \
    GATHERED(Partition)                                                           \
    GATHERED(USBDevice)                                                           \
    GATHERED(PCIDevice)                                                           \
    GATHERED(Modem)                                                               \
    GATHERED(MemoryModules)                                                       \
    GATHERED(Monitor)                                                             \
    GATHERED(Lpar)                                                                \
    GATHERED(ServiceInfo)                                                         \
    GATHERED(UserAccountInfo)                                                     \
    GATHERED(LastLoggedUser)                                                      \
    GATHERED(ScreenSaverInfo)                                                     \
    ELSEWHERE(OperatingSystemCSIDL, "Operating System CSIDL", kWindows)           \
    ELSEWHERE(WinCluster, "WinCluster", kWindows)                                 \
    ELSEWHERE(WinClusterNode, "WinClusterNode", kWindows)                         \
    ELSEWHERE(VEQCluster, "VEQCluster", kOtherSystem)                             \
    ELSEWHERE(VEQClusterNode, "VEQClusterNode", kOtherSystem)                     \
    GATHERED(PhysicalProcessor)                                                   \
    GATHERED(HostComponentID)                                                     \
    GATHERED(CpuMeter)                                                            \
    GATHERED(UnixCpuMeter)                                                        \
    ELSEWHERE(WinCpuMeter, "WinCpuMeter", kWindows)                               \
    GATHERED(VirtualMachine)                                                      \
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
