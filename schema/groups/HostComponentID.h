#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kHostComponentIDFields[] = {
    {.name = "UUID",
     .type = Type::Uuid,
     .privacy = Privacy::Serial,
     .access = Access::RootOnly,
     .meaning = "identifier of the machine",
     .source = "as in ComponentID"},
    {.name = "Manufacturer",
     .meaning = "maker of the machine",
     .source = "as in ComponentID; `/proc/sysinfo`"},
    {.name = "ProductName",
     .meaning = "model of the machine",
     .source = "as in ComponentID; `/proc/device-tree/host-model`; `/proc/sysinfo`"},
    {.name = "SerialNumber",
     .privacy = Privacy::Serial,
     .access = Access::RootSeesMore,
     .meaning = "serial number of the machine",
     .source = "as in ComponentID; `/proc/device-tree/host-serial`; `/proc/sysinfo`"},
    {.name = "Name",
     .privacy = Privacy::Name,
     .meaning = "host name of the machine",
     .source = "`/var/lib/hyperv/.kvp_pool_3`; as in ComponentID"},
    {.name = "Source",
     .type = Type::Choice,
     .choices = "self|kvp|device-tree|sysinfo",
     .meaning = "where the values come from; `kvp` is Hyper-V, `device-tree` POWER, `sysinfo` s390x",
     .source = "where it was found"},
};

inline constexpr Group kHostComponentID{
    .id = 45,
    .name = "HostComponentID",
    .element = "HostComponentID",
    .about =
        "The machine that carries the system: the computer itself, or the host of a virtual machine as far "
        "as the hypervisor tells. Other guests are not told which machine hosts them: not applicable "
        "(`unknown-host`).",
    .fields = kHostComponentIDFields,
    .columns = "Name Manufacturer ProductName SerialNumber",
};

}  // namespace schema
