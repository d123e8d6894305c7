#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kModemFields[] = {
    {.name = "DeviceID",
     .key = true,
     .meaning = "USB device, PCI address or name in the kernel",
     .source = "`/sys/bus/usb/devices`; `/sys/bus/pci/devices`; `/sys/class/wwan`"},
    {.name = "Name", .meaning = "name of the device", .source = "USB product; names of PCI and USB devices"},
    {.name = "Manufacturer",
     .meaning = "maker of the device",
     .source = "USB manufacturer; names of PCI and USB devices"},
    {.name = "AttachedTo",
     .list = true,
     .meaning = "devices through which programs use it, `/dev/ttyACM0`",
     .source = "`/sys/class/tty`; `/sys/class/wwan`"},
    {.name = "Model",
     .meaning = "model of the device",
     .source = "USB product; names of PCI and USB devices"},
    {.name = "FirmwareVersion",
     .meaning = "version of the firmware; not known at present",
     .source = "nothing at present"},
    {.name = "EquipmentIdentifier",
     .privacy = Privacy::Serial,
     .meaning = "identifier of the device in the network; not known at present",
     .source = "nothing at present"},
    {.name = "InterfaceType",
     .type = Type::Choice,
     .choices = "USB|PCI",
     .meaning = "how the modem is attached",
     .source = "path of the device"},
    {.name = "State",
     .isVolatile = true,
     .meaning = "state of the connection; not known at present",
     .source = "nothing at present"},
};

inline constexpr Group kModem{
    .id = 30,
    .name = "Modem",
    .element = "Modem",
    .about =
        "One instance per modem of the USB, PCI or WWAN classes. ModemManager is not asked, so what only the "
        "modem itself knows is unknown.",
    .fields = kModemFields,
    .columns = "Name Manufacturer Model State",
};

}  // namespace schema
