#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kParallelPortFields[] = {
    {.name = "DeviceID",
     .key = true,
     .meaning = "name in the kernel, `parport0`",
     .source = "`/proc/sys/dev/parport`"},
    {.name = "DMASupport",
     .type = Type::Boolean,
     .meaning = "whether the port has a DMA channel",
     .source = "`/proc/sys/dev/parport/*/dma`"},
    {.name = "Capabilities",
     .list = true,
     .meaning = "modes, `PCSPP`, `TRISTATE`, `EPP`, `ECP`",
     .source = "`/proc/sys/dev/parport/*/modes`"},
    {.name = "IoAddress",
     .type = Type::Hex,
     .meaning = "address of the port",
     .source = "`/proc/sys/dev/parport/*/base-addr`"},
    {.name = "Irq",
     .type = Type::Count,
     .meaning = "number of the interrupt",
     .source = "`/proc/sys/dev/parport/*/irq`"},
    {.name = "DmaChannel",
     .type = Type::Count,
     .meaning = "number of the DMA channel",
     .source = "`/proc/sys/dev/parport/*/dma`"},
};

inline constexpr Group kParallelPort{
    .id = 23,
    .name = "Parallel Port",
    .element = "ParallelPort",
    .about =
        "One instance per parallel port. The kernel shows ports only while its driver `parport` is loaded; "
        "without it the group is not applicable (`no-driver`).",
    .fields = kParallelPortFields,
    .columns = "DeviceID IoAddress Irq Capabilities",
};

}  // namespace schema
