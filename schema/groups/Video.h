#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kVideoFields[] = {
    {.name = "DeviceID",
     .key = true,
     .bytewise = true,
     .meaning = "PCI address, or the name of a device on another bus",
     .source = "`/sys/bus/pci/devices`; `/sys/class/drm`"},
    {.name = "Name", .meaning = "name of the controller", .source = "names of PCI devices; device tree"},
    {.name = "Manufacturer", .meaning = "maker of the chip", .source = "names of PCI devices"},
    {.name = "VideoProcessor",
     .meaning = "name of the chip",
     .source = "names of PCI devices; `/proc/driver/nvidia`"},
    {.name = "VideoMemory",
     .type = Type::Count,
     .unit = "bytes",
     .meaning = "memory of the controller, if the driver reports it",
     .source = "`mem_info_vram_total`"},
    {.name = "CurrentHorizontalResolution",
     .type = Type::Count,
     .unit = "pixels",
     .isVolatile = true,
     .meaning = "width of the console",
     .source = "`/sys/class/graphics/fb*/virtual_size`"},
    {.name = "CurrentVerticalResolution",
     .type = Type::Count,
     .unit = "pixels",
     .isVolatile = true,
     .meaning = "height of the console",
     .source = "`/sys/class/graphics/fb*/virtual_size`"},
    {.name = "VendorId",
     .type = Type::Hex,
     .meaning = "number of the maker of the chip",
     .source = "`vendor`"},
    {.name = "ProductId", .type = Type::Hex, .meaning = "number of the chip", .source = "`device`"},
    {.name = "SubsystemVendorId",
     .type = Type::Hex,
     .meaning = "number of the maker of the board",
     .source = "`subsystem_vendor`"},
    {.name = "SubsystemId",
     .type = Type::Hex,
     .meaning = "number of the board",
     .source = "`subsystem_device`"},
    {.name = "DriverName", .meaning = "name of the driver", .source = "`driver`"},
    {.name = "DriverVersion", .meaning = "version of the driver", .source = "`/sys/module/*/version`"},
    {.name = "DrmName", .meaning = "name in the kernel, `card0`", .source = "`/sys/class/drm`"},
    {.name = "Connectors",
     .list = true,
     .meaning = "names of the connectors, `HDMI-A-1`",
     .source = "`/sys/class/drm`"},
    {.name = "BootVga",
     .type = Type::Boolean,
     .meaning = "whether the firmware showed its messages there",
     .source = "`boot_vga`"},
};

inline constexpr Group kVideo{
    .id = 13,
    .name = "Video",
    .element = "Video",
    .about = "One instance per display controller.",
    .fields = kVideoFields,
};

}  // namespace schema
