#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kUSBDeviceFields[] = {
    {.name = "DeviceID", .key = true, .meaning = "bus and ports, `1-1.2`", .source = "/sys/bus/usb/devices"},
    {.name = "Name", .meaning = "product name", .source = "product; names of USB devices"},
    {.name = "Manufacturer",
     .meaning = "maker of the device",
     .source = "manufacturer; names of USB devices"},
    {.name = "SerialNumber",
     .privacy = Privacy::Serial,
     .meaning = "serial number of the device",
     .source = "serial"},
    {.name = "USBVersion", .meaning = "USB version that the device supports", .source = "version"},
    {.name = "ClassCode", .type = Type::Hex, .meaning = "class of the device", .source = "bDeviceClass"},
    {.name = "SubclassCode",
     .type = Type::Hex,
     .meaning = "subclass of the device",
     .source = "bDeviceSubClass"},
    {.name = "ProtocolCode",
     .type = Type::Hex,
     .meaning = "protocol of the device",
     .source = "bDeviceProtocol"},
    {.name = "NumberOfConfigs",
     .type = Type::Count,
     .meaning = "number of configurations",
     .source = "bNumConfigurations"},
    {.name = "VendorId", .type = Type::Hex, .meaning = "number of the maker", .source = "idVendor"},
    {.name = "ProductId", .type = Type::Hex, .meaning = "number of the product", .source = "idProduct"},
    {.name = "Release", .meaning = "release number of the device", .source = "bcdDevice"},
    {.name = "Speed",
     .type = Type::Count,
     .unit = "bit/s",
     .meaning = "speed of the connection",
     .source = "speed"},
    {.name = "MaxPower",
     .type = Type::Count,
     .unit = "mA",
     .meaning = "highest current that the device draws",
     .source = "bMaxPower"},
    {.name = "Drivers",
     .list = true,
     .meaning = "drivers of the interfaces",
     .source = "drivers of the interfaces"},
    {.name = "InterfaceClasses",
     .type = Type::Hex,
     .list = true,
     .meaning = "class, subclass and protocol of the interfaces",
     .source = "bInterfaceClass; bInterfaceSubClass; bInterfaceProtocol"},
    {.name = "Removable",
     .type = Type::Boolean,
     .meaning = "whether the device can be removed",
     .source = "removable"},
};

inline constexpr Group kUSBDevice{
    .id = 28,
    .name = "USB Device",
    .element = "USBDevice",
    .about = "One instance per USB device, including root hubs.",
    .fields = kUSBDeviceFields,
};

}  // namespace schema
