#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kPrinterFields[] = {
    {.name = "Name",
     .key = true,
     .meaning = "name of the printer",
     .source = "`/etc/cups/printers.conf`; `/etc/cups/ppd`; `/etc/printcap`"},
    {.name = "Description", .meaning = "description", .source = "`/etc/cups/printers.conf`; `/etc/printcap`"},
    {.name = "Location",
     .access = Access::RootOnly,
     .meaning = "place of the printer",
     .source = "`/etc/cups/printers.conf`"},
    {.name = "PrinterStatus",
     .type = Type::Choice,
     .choices = "Idle|Stopped",
     .isVolatile = true,
     .access = Access::RootOnly,
     .meaning = "whether the printer accepts jobs",
     .source = "`/etc/cups/printers.conf`"},
    {.name = "Default",
     .type = Type::Boolean,
     .access = Access::RootOnly,
     .meaning = "whether programs use it by default",
     .source = "`/etc/cups/printers.conf`"},
    {.name = "HorizontalResolution",
     .type = Type::Count,
     .unit = "dpi",
     .access = Access::RootOnly,
     .meaning = "resolution by default",
     .source = "`/etc/cups/ppd`"},
    {.name = "VerticalResolution",
     .type = Type::Count,
     .unit = "dpi",
     .access = Access::RootOnly,
     .meaning = "resolution by default",
     .source = "`/etc/cups/ppd`"},
    {.name = "DeviceUri",
     .privacy = Privacy::Content,
     .access = Access::RootOnly,
     .meaning = "how the printer is reached, without user and password",
     .source = "`/etc/cups/printers.conf`"},
    {.name = "MakeAndModel",
     .access = Access::RootOnly,
     .meaning = "maker and model",
     .source = "`/etc/cups/printers.conf`"},
    {.name = "Shared",
     .type = Type::Boolean,
     .access = Access::RootOnly,
     .meaning = "whether other machines may use it",
     .source = "`/etc/cups/printers.conf`"},
    {.name = "Color",
     .type = Type::Boolean,
     .access = Access::RootOnly,
     .meaning = "whether it prints colours",
     .source = "`/etc/cups/ppd`"},
    {.name = "Duplex",
     .type = Type::Boolean,
     .access = Access::RootOnly,
     .meaning = "whether it prints on both sides",
     .source = "`/etc/cups/ppd`"},
};

inline constexpr Group kPrinter{
    .id = 14,
    .name = "Printer",
    .element = "Printer",
    .about =
        "The printers of CUPS, from its files. Printers that CUPS finds in the network and does not keep are "
        "not listed. Users other than root and the members of the group `lp` see only Name and Description.",
    .fields = kPrinterFields,
};

}  // namespace schema
