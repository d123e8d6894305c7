#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kKeyboardFields[] = {
    {.name = "DeviceID",
     .key = true,
     .meaning = "name in the kernel, `input3`",
     .source = "`/proc/bus/input/devices`; `/sys/class/input`"},
    {.name = "Name", .meaning = "name of the device", .source = "`/proc/bus/input/devices`; `name`"},
    {.name = "Manufacturer",
     .meaning = "maker of a USB or Bluetooth device",
     .source = "USB manufacturer; names of USB devices"},
    {.name = "NumberOfFunctionKeys",
     .type = Type::Count,
     .meaning = "number of function keys",
     .source = "`capabilities/key`"},
    {.name = "Layout",
     .list = true,
     .meaning = "layout that the system gives to all keyboards",
     .source = "`/etc/default/keyboard`; `/etc/vconsole.conf`"},
    {.name = "InterfaceType",
     .meaning = "`USB`, `PS/2`, `Bluetooth`, `I2C`, `Virtual` and so on",
     .source = "`id/bustype`"},
    {.name = "VendorId", .type = Type::Hex, .meaning = "number of the maker", .source = "`id/vendor`"},
    {.name = "ProductId", .type = Type::Hex, .meaning = "number of the product", .source = "`id/product`"},
    {.name = "Phys",
     .privacy = Privacy::Address,
     .meaning = "where the device is attached",
     .source = "`phys`"},
};

inline constexpr Group kKeyboard{
    .id = 10,
    .name = "Keyboard",
    .element = "Keyboard",
    .about = "One instance per device that has all letters of the alphabet.",
    .fields = kKeyboardFields,
    .columns = "Name Manufacturer Layout InterfaceType",
};

}  // namespace schema
