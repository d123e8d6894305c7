#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kSerialPortFields[] = {
    {.name = "DeviceID",
     .key = true,
     .meaning = "path of the device, `/dev/ttyS0`",
     .source = "`/sys/class/tty`"},
    {.name = "Name",
     .meaning = "name of the USB device, or the name in the kernel",
     .source = "USB product; `/sys/class/tty`"},
    {.name = "MaxBaudRate",
     .type = Type::Count,
     .unit = "bit/s",
     .meaning = "highest speed",
     .source = "`uartclk`"},
    {.name = "UartType", .meaning = "kind of the chip, `16550A`", .source = "`type`"},
    {.name = "IoAddress",
     .type = Type::Hex,
     .meaning = "address of the port or of its registers in memory",
     .source = "`port`; `iomem_base`"},
    {.name = "Irq", .type = Type::Count, .meaning = "number of the interrupt", .source = "`irq`"},
    {.name = "BusAddress", .meaning = "PCI address or USB device", .source = "path of the device"},
    {.name = "Driver", .meaning = "name of the driver", .source = "`device/driver`"},
};

inline constexpr Group kSerialPort{
    .id = 22,
    .name = "Serial Port",
    .element = "SerialPort",
    .about = "One instance per serial port with hardware, including USB adapters.",
    .fields = kSerialPortFields,
    .columns = "DeviceID Name UartType MaxBaudRate",
};

}  // namespace schema
