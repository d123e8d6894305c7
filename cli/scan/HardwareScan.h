// Runs a hardware scan through the library and reads its results.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/HardwareInventory.h"
#include "cli/scan/LibraryHandle.h"

namespace zavcli {

// The group in which a scanner reports on the scan itself. Every scanner supports it.
inline const GroupName kScanInfo{ZAV_HW_SCAN_INFO, "ScanInfo"};

// The group that tells the name of the machine.
inline const GroupName kComputer{ZAV_HW_COMPONENT_ID, "ComponentID"};

// Whether the name of the machine is known always, or only if its group is scanned.
enum class HostName { IfScanned, Always };

// Scans the groups. `toolkit` is the directory with which the library was opened. Throws Failure if the scan fails.
std::vector<Group> scanGroups(LibraryHandle& library, const std::string& toolkit,
                              const std::vector<GroupName>& groups);

// Scans the groups and adds the circumstances of the scan and the status of each group. `root` is the scanned
// directory, empty for this machine. Throws Failure if the scan fails.
HardwareInventory scanHardware(LibraryHandle& library, const std::string& toolkit, const std::string& root,
                               const std::vector<GroupName>& groups, HostName host = HostName::IfScanned);

}  // namespace zavcli
