#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kPointingDeviceFields[] = {
    {.name = "DeviceID",
     .key = true,
     .meaning = "name in the kernel, `input5`",
     .source = "`/proc/bus/input/devices`; `/sys/class/input`"},
    {.name = "Name", .meaning = "name of the device", .source = "`/proc/bus/input/devices`; `name`"},
    {.name = "Manufacturer",
     .meaning = "maker of a USB or Bluetooth device",
     .source = "USB manufacturer; names of USB devices"},
    {.name = "PointingType",
     .type = Type::Choice,
     .choices = "Mouse|Touchpad|TrackPoint|Tablet|TouchScreen|Joystick",
     .meaning = "kind of device",
     .source = "`capabilities`; `properties`"},
    {.name = "NumberOfButtons",
     .type = Type::Count,
     .meaning = "number of buttons",
     .source = "`capabilities/key`"},
    {.name = "Resolution",
     .type = Type::Count,
     .unit = "units/mm",
     .access = Access::RootOnly,
     .liveOnly = true,
     .meaning = "resolution of the device's coordinates",
     .source = "`/dev/input/event*`"},
    {.name = "InterfaceType",
     .meaning = "`USB`, `PS/2`, `Bluetooth`, `I2C`, `Virtual` and so on",
     .source = "`id/bustype`"},
    {.name = "VendorId", .type = Type::Hex, .meaning = "number of the maker", .source = "`id/vendor`"},
    {.name = "ProductId", .type = Type::Hex, .meaning = "number of the product", .source = "`id/product`"},
    {.name = "Phys",
     .privacy = Privacy::Address,
     .meaning = "where the device is attached",
     .source = "`phys`"},
    {.name = "SerialNumber",
     .privacy = Privacy::Serial,
     .meaning = "serial number of a USB device, address of a Bluetooth device",
     .source = "`uniq`"},
};

inline constexpr Group kPointingDevice{
    .id = 9,
    .name = "Pointing Device",
    .element = "PointingDevice",
    .about = "Mice, touchpads, tablets, touch screens and joysticks. One instance per device.",
    .fields = kPointingDeviceFields,
    .columns = "Name PointingType NumberOfButtons InterfaceType",
};

}  // namespace schema
