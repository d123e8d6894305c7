#pragma once

#include "cli/scan/HardwareInventory.h"

namespace zavcli {

// What the group ScanInfo says of a scan of which some groups are not complete.
inline const Instance kScanInfo{{"GroupsRequested", "Memory;Modem;SoftwarePackages;Printer"},
                                {"GroupsComplete", "Modem;ScanInfo"},
                                {"GroupsPartial", "Memory=permission"},
                                {"GroupsUnread", "SoftwarePackages=rpm-broken;Storage=timeout"},
                                {"GroupsNotApplicable", "WinCluster=windows"},
                                {"GroupsUnsupported", "Printer;Keyboard"}};

}  // namespace zavcli
