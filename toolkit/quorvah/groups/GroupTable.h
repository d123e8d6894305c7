#pragma once

#include <span>
#include <string_view>

#include "toolkit/quorvah/report/Group.h"

namespace toolkit::quorvah {

// All groups in the order of their ids.
std::span<const Group* const> allGroups();

// The group with this display name or XML name; null when there is none.
const Group* findGroup(std::string_view name);

// The groups that are gathered, each defined in <its XML name>Group.cpp.
extern const Group kComponentID;
extern const Group kDiskPartition;
extern const Group kMemory;
extern const Group kOperatingSystem;
extern const Group kPhysicalProcessor;
extern const Group kProcessor;
extern const Group kRegional;
extern const Group kScanInfo;
extern const Group kStorage;
extern const Group kUNIXSystemParams;
extern const Group kVirtualMachineGuest;

}  // namespace toolkit::quorvah
