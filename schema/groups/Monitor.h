#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kMonitorFields[] = {
    {.name = "DeviceID", .key = true, .meaning = "connector, `card0-HDMI-A-1`", .source = "`/sys/class/drm`"},
    {.name = "Name", .meaning = "model, as the display reports it", .source = "`edid`"},
    {.name = "Manufacturer", .meaning = "maker of the display", .source = "`edid`; names of display makers"},
    {.name = "SerialNumber",
     .privacy = Privacy::Serial,
     .meaning = "serial number of the display",
     .source = "`edid`"},
    {.name = "HorizontalResolution",
     .type = Type::Count,
     .unit = "pixels",
     .meaning = "width of the preferred mode",
     .source = "`edid`"},
    {.name = "VerticalResolution",
     .type = Type::Count,
     .unit = "pixels",
     .meaning = "height of the preferred mode",
     .source = "`edid`"},
    {.name = "DisplayType",
     .type = Type::Choice,
     .choices = "Digital|Analog",
     .meaning = "kind of signal",
     .source = "`edid`"},
    {.name = "ManufacturerId", .meaning = "identifier of the maker, three letters", .source = "`edid`"},
    {.name = "ProductCode", .type = Type::Hex, .meaning = "number of the model", .source = "`edid`"},
    {.name = "WeekOfManufacture", .type = Type::Count, .meaning = "week of the year", .source = "`edid`"},
    {.name = "YearOfManufacture",
     .type = Type::Count,
     .meaning = "year of manufacture or of the model",
     .source = "`edid`"},
    {.name = "ImageWidth",
     .type = Type::Count,
     .unit = "mm",
     .meaning = "width of the screen",
     .source = "`edid`"},
    {.name = "ImageHeight",
     .type = Type::Count,
     .unit = "mm",
     .meaning = "height of the screen",
     .source = "`edid`"},
    {.name = "Diagonal",
     .type = Type::Count,
     .unit = "mm",
     .meaning = "diagonal of the screen",
     .source = "`edid`"},
    {.name = "EdidVersion", .meaning = "version of the display's description, `1.4`", .source = "`edid`"},
    {.name = "Edid",
     .type = Type::Hex,
     .privacy = Privacy::Serial,
     .meaning = "the display's description of itself",
     .source = "`edid`"},
};

inline constexpr Group kMonitor{
    .id = 32,
    .name = "Monitor",
    .element = "Monitor",
    .about =
        "Connected displays. One instance per connector with a display. Without a driver that knows its "
        "connectors the group is not applicable (`no-driver`).",
    .fields = kMonitorFields,
    .columns = "Name Manufacturer HorizontalResolution VerticalResolution",
};

}  // namespace schema
