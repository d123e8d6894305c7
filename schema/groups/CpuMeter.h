#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kCpuMeterFields[] = {
    {.name = "DeviceID", .meaning = "always `total`", .source = "the word \"total\""},
    {.name = "LoadPercentage",
     .type = Type::Count,
     .unit = "percent",
     .isVolatile = true,
     .meaning = "share of the time in which the processors were not idle, during SampleInterval or since the "
                "system started",
     .source = "`/proc/stat`"},
    {.name = "SampleTime",
     .type = Type::Time,
     .isVolatile = true,
     .liveOnly = true,
     .meaning = "time of the measurement",
     .source = "clock"},
    {.name = "UserModeTime",
     .type = Type::Count,
     .unit = "ms",
     .isVolatile = true,
     .meaning = "time in programs since the system started",
     .source = "`/proc/stat`"},
    {.name = "KernelModeTime",
     .type = Type::Count,
     .unit = "ms",
     .isVolatile = true,
     .meaning = "time in the kernel since the system started",
     .source = "`/proc/stat`"},
    {.name = "SampleInterval",
     .type = Type::Count,
     .unit = "ms",
     .liveOnly = true,
     .meaning = "duration of the measurement; empty if LoadPercentage is the mean since the system started, "
                "as in a scan of all groups, which does not wait",
     .source = "clock"},
    {.name = "IdleTime",
     .type = Type::Count,
     .unit = "ms",
     .isVolatile = true,
     .meaning = "time of idling since the system started",
     .source = "`/proc/stat`"},
    {.name = "OnlineProcessors",
     .type = Type::Count,
     .meaning = "number of online processors",
     .source = "`/proc/stat`"},
    {.name = "RunQueue",
     .type = Type::Count,
     .isVolatile = true,
     .meaning = "processes that run or wait for a processor",
     .source = "`/proc/loadavg`"},
    {.name = "LoadAverage1",
     .type = Type::Decimal,
     .isVolatile = true,
     .meaning = "load average over 1 minute",
     .source = "`/proc/loadavg`"},
};

inline constexpr Group kCpuMeter{
    .id = 46,
    .name = "CpuMeter",
    .element = "CpuMeter",
    .about = "The load of all processors together. One instance.",
    .fields = kCpuMeterFields,
    .columns = "DeviceID LoadPercentage OnlineProcessors RunQueue LoadAverage1",
};

}  // namespace schema
