#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kServiceInfoFields[] = {
    {.name = "Name",
     .key = true,
     .meaning = "`ssh.service`, or the name of the script",
     .source = "unit files; `/etc/init.d`"},
    {.name = "Caption", .meaning = "description", .source = "Description in the unit file"},
    {.name = "StartMode",
     .type = Type::Choice,
     .choices = "Automatic|Manual|Disabled|Masked",
     .meaning = "how the service is started; `Manual` if other services or users start it",
     .source = "links in the folders of unit files; `/etc/rc?.d`; `/etc/runlevels`"},
    {.name = "Started",
     .type = Type::Boolean,
     .isVolatile = true,
     .liveOnly = true,
     .meaning = "whether the service is active",
     .source = "`/sys/fs/cgroup`; `/run`"},
    {.name = "Status",
     .type = Type::Choice,
     .choices = "Active|Inactive",
     .isVolatile = true,
     .liveOnly = true,
     .meaning = "state of the service",
     .source = "`/sys/fs/cgroup`; `/run`"},
    {.name = "SubState",
     .type = Type::Choice,
     .choices = "Running|Exited",
     .isVolatile = true,
     .liveOnly = true,
     .meaning = "whether an active service has a process",
     .source = "`/sys/fs/cgroup`; `/run`"},
    {.name = "ProcessId",
     .type = Type::Count,
     .isVolatile = true,
     .liveOnly = true,
     .meaning = "number of the main process",
     .source = "`/sys/fs/cgroup`"},
    {.name = "PathName", .meaning = "program", .source = "ExecStart in the unit file"},
    {.name = "StartName",
     .privacy = Privacy::Name,
     .meaning = "account that the program runs as",
     .source = "User in the unit file"},
    {.name = "UnitFile", .meaning = "file that describes the service", .source = "unit files; `/etc/init.d`"},
    {.name = "InitSystem",
     .type = Type::Choice,
     .choices = "systemd|openrc|sysv",
     .meaning = "kind of service",
     .source = "where it was found"},
};

inline constexpr Group kServiceInfo{
    .id = 35,
    .name = "Service Info",
    .element = "ServiceInfo",
    .about =
        "The services of systemd, from its unit files, and those that scripts in `/etc/init.d` start. The "
        "service manager is not asked: whether a service runs is taken from its files in `/run` and "
        "`/sys/fs/cgroup`, and a service that failed is `Inactive`. In a captured tree it is unknown.",
    .fields = kServiceInfoFields,
    .columns = "Name Status StartMode Caption",
};

}  // namespace schema
