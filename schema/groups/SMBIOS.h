#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kSMBIOSFields[] = {
    {.name = "Handle",
     .type = Type::Hex,
     .key = true,
     .access = Access::RootOnly,
     .bytewise = true,
     .meaning = "handle of the structure, four digits",
     .source = "`/sys/firmware/dmi/tables/DMI`; `/sys/firmware/dmi/entries`"},
    {.name = "Type",
     .type = Type::Count,
     .access = Access::RootOnly,
     .meaning = "type of the structure",
     .source = "`/sys/firmware/dmi/tables/DMI`"},
    {.name = "Description",
     .access = Access::RootOnly,
     .meaning = "name of the type",
     .source = "type of the structure"},
    {.name = "Length",
     .type = Type::Count,
     .unit = "bytes",
     .access = Access::RootOnly,
     .meaning = "length of Data",
     .source = "`/sys/firmware/dmi/tables/DMI`"},
    {.name = "Strings",
     .list = true,
     .privacy = Privacy::Serial,
     .access = Access::RootOnly,
     .meaning = "texts of the structure, in their order",
     .source = "`/sys/firmware/dmi/tables/DMI`"},
    {.name = "Data",
     .type = Type::Hex,
     .privacy = Privacy::Serial,
     .access = Access::RootOnly,
     .meaning = "bytes of the structure without its texts",
     .source = "`/sys/firmware/dmi/tables/DMI`"},
    {.name = "SmbiosVersion",
     .access = Access::RootOnly,
     .meaning = "version of the standard, `3.6`",
     .source = "`/sys/firmware/dmi/tables/smbios_entry_point`"},
    {.name = "Number",
     .type = Type::Count,
     .access = Access::RootOnly,
     .meaning = "number of the structure among those of its type, from 0",
     .source = "order of the structures"},
};

inline constexpr Group kSMBIOS{
    .id = 24,
    .name = "SMBIOS",
    .element = "SMBIOS",
    .about =
        "The structures of the firmware's tables, as DMTF standard DSP0134 defines them. One instance per "
        "structure. Only root may read the tables. Machines without such firmware, and containers that hide "
        "it, do not have the group (`no-smbios`).",
    .fields = kSMBIOSFields,
    .columns = "Handle Type Description Strings",
};

}  // namespace schema
