#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kMemoryFields[] = {
    {.name = "DeviceID", .meaning = "always `memory`", .source = "the word \"memory\""},
    {.name = "TotalVisibleMemorySize",
     .type = Type::Count,
     .unit = "KiB",
     .meaning = "memory available to the system",
     .source = "`/proc/meminfo`"},
    {.name = "FreePhysicalMemory",
     .type = Type::Count,
     .unit = "KiB",
     .isVolatile = true,
     .meaning = "memory that nothing uses",
     .source = "`/proc/meminfo`"},
    {.name = "TotalVirtualMemorySize",
     .type = Type::Count,
     .unit = "KiB",
     .meaning = "memory and swap space",
     .source = "`/proc/meminfo`"},
    {.name = "FreeVirtualMemory",
     .type = Type::Count,
     .unit = "KiB",
     .isVolatile = true,
     .meaning = "memory and swap space that nothing uses",
     .source = "`/proc/meminfo`"},
    {.name = "TotalSwapSpaceSize",
     .type = Type::Count,
     .unit = "KiB",
     .meaning = "swap space",
     .source = "`/proc/meminfo`"},
    {.name = "MaximumCapacity",
     .type = Type::Count,
     .unit = "KiB",
     .access = Access::RootOnly,
     .meaning = "memory that the board supports",
     .source = "SMBIOS 16"},
    {.name = "NumberOfMemoryDevices",
     .type = Type::Count,
     .access = Access::RootOnly,
     .meaning = "number of sockets for modules",
     .source = "SMBIOS 16"},
    {.name = "InstalledMemory",
     .type = Type::Count,
     .unit = "KiB",
     .access = Access::RootSeesMore,
     .meaning = "memory of the installed modules",
     .source = "SMBIOS 17; `/sys/devices/system/memory`; `/sys/firmware/memmap`; `/proc/zoneinfo`; "
               "`/proc/meminfo`"},
    {.name = "MemAvailable",
     .type = Type::Count,
     .unit = "KiB",
     .isVolatile = true,
     .meaning = "memory available to new programs without swapping",
     .source = "`/proc/meminfo`"},
    {.name = "NumaNodes",
     .type = Type::Count,
     .meaning = "number of NUMA nodes",
     .source = "`/sys/devices/system/node`"},
    {.name = "HugePageSize",
     .type = Type::Count,
     .unit = "KiB",
     .meaning = "size of a huge page",
     .source = "`/proc/meminfo`"},
    {.name = "HugePagesTotal",
     .type = Type::Count,
     .meaning = "number of huge pages",
     .source = "`/proc/meminfo`"},
    {.name = "ErrorCorrection",
     .access = Access::RootOnly,
     .meaning = "kind of error correction",
     .source = "SMBIOS 16"},
};

inline constexpr Group kMemory{
    .id = 3,
    .name = "Memory",
    .element = "Memory",
    .about =
        "Main memory and swap space. One instance.\n\nInstalledMemory is what the firmware states, which "
        "only root can see, unless more memory is online, because some was added while the machine ran. In "
        "this case, and for other users, it is what the firmware's map of addresses or a virtual machine's "
        "device tree shows, if the kernel "
        "found "
        "all of it but a mebibyte. Otherwise it is the roundest number between the memory that the kernel "
        "found "
        "and the size of the memory blocks that are online.",
    .fields = kMemoryFields,
    .columns = "TotalVisibleMemorySize MemAvailable TotalSwapSpaceSize",
};

}  // namespace schema
