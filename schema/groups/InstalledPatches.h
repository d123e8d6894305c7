#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kInstalledPatchesFields[] = {
    {.name = "InstanceID",
     .key = true,
     .meaning = "`livepatch:NAME`, or the package URL of the new version",
     .source = "`/sys/kernel/livepatch`; `/var/log/dpkg.log*`; `/var/log/pacman.log`"},
    {.name = "Name",
     .meaning = "name of the patch or package",
     .source = "`/sys/kernel/livepatch`; `/var/log/dpkg.log*`; `/var/log/pacman.log`"},
    {.name = "VersionString",
     .meaning = "installed version",
     .source = "`/var/log/dpkg.log*`; `/var/log/pacman.log`"},
    {.name = "InstallDate",
     .type = Type::Time,
     .key = true,
     .meaning = "time of the upgrade; only the day if the time zone is not known",
     .source = "`/var/log/dpkg.log*`; `/var/log/pacman.log`"},
    {.name = "Description", .meaning = "description; not known at present", .source = "nothing at present"},
    {.name = "PreviousVersion",
     .meaning = "version before the upgrade",
     .source = "`/var/log/dpkg.log*`; `/var/log/pacman.log`"},
    {.name = "PatchType",
     .type = Type::Choice,
     .choices = "livepatch|package-update",
     .meaning = "kind of patch",
     .source = "where it was found"},
    {.name = "Enabled",
     .type = Type::Boolean,
     .meaning = "whether the live patch is in use",
     .source = "`/sys/kernel/livepatch/*/enabled`"},
    {.name = "FixedIds",
     .list = true,
     .meaning = "identifiers of the fixed defects; not known at present",
     .source = "nothing at present"},
};

inline constexpr Group kInstalledPatches{
    .id = 26,
    .name = "Installed Patches",
    .element = "InstalledPatches",
    .about =
        "Live patches of the kernel, and the upgrades of packages within the last 180 days that the logs of "
        "dpkg and pacman tell. Linux has no general list of patches. The history of dnf and zypper is not "
        "read.",
    .fields = kInstalledPatchesFields,
    .columns = "Name VersionString PreviousVersion InstallDate",
};

}  // namespace schema
