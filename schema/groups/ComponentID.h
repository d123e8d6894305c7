#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kComponentIDFields[] = {
    {.name = "UUID",
     .type = Type::Uuid,
     .privacy = Privacy::Serial,
     .access = Access::RootOnly,
     .meaning =
         "identifier of the machine from its firmware or, without the kernel's copies, from structure type 1",
     .source = "`/sys/class/dmi/id/product_uuid`; SMBIOS 1; `/proc/device-tree/vm,uuid`"},
    {.name = "Manufacturer",
     .meaning = "maker of the computer",
     .source = "`/sys/class/dmi/id/sys_vendor`; SMBIOS 1; `/proc/device-tree`; `/proc/sysinfo`"},
    {.name = "ProductName",
     .meaning = "model",
     .source = "`/sys/class/dmi/id/product_name`; SMBIOS 1; `/proc/device-tree/model`; `/proc/cpuinfo`; "
               "`/proc/sysinfo`"},
    {.name = "Version",
     .meaning = "version of the model",
     .source = "`/sys/class/dmi/id/product_version`; SMBIOS 1"},
    {.name = "SerialNumber",
     .privacy = Privacy::Serial,
     .access = Access::RootOnly,
     .meaning = "serial number of the computer",
     .source = "`/sys/class/dmi/id/product_serial`; SMBIOS 1; `/proc/device-tree/serial-number`; "
               "`/proc/cpuinfo`; `/proc/sysinfo`"},
    {.name = "SKUNumber",
     .meaning = "order number of the model",
     .source = "`/sys/class/dmi/id/product_sku`; SMBIOS 1"},
    {.name = "Family", .meaning = "product family", .source = "`/sys/class/dmi/id/product_family`; SMBIOS 1"},
    {.name = "Name",
     .privacy = Privacy::Name,
     .meaning = "host name",
     .source = "`/proc/sys/kernel/hostname`; `/etc/hostname`"},
    {.name = "MachineId",
     .type = Type::Hex,
     .privacy = Privacy::Serial,
     .meaning = "content of `/etc/machine-id`",
     .source = "`/etc/machine-id`"},
    {.name = "BootId",
     .type = Type::Uuid,
     .isVolatile = true,
     .privacy = Privacy::Serial,
     .meaning = "identifier of the current boot",
     .source = "`/proc/sys/kernel/random/boot_id`"},
};

inline constexpr Group kComponentID{
    .id = 1,
    .name = "ComponentID",
    .element = "ComponentID",
    .about = "The computer. One instance.",
    .fields = kComponentIDFields,
    .columns = "Name Manufacturer ProductName SerialNumber",
};

}  // namespace schema
