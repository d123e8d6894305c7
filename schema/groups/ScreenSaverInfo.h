#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kScreenSaverInfoFields[] = {
    {.name = "UserName",
     .key = true,
     .privacy = Privacy::Name,
     .meaning = "name of the account",
     .source = "`/etc/passwd`"},
    {.name = "ScreenSaverActive",
     .type = Type::Boolean,
     .access = Access::RootSeesMore,
     .meaning = "whether it starts when nobody uses the machine",
     .source = "the file in Source"},
    {.name = "ScreenSaverSecure",
     .type = Type::Boolean,
     .access = Access::RootSeesMore,
     .meaning = "whether it asks for the password",
     .source = "the file in Source"},
    {.name = "ScreenSaverTimeout",
     .type = Type::Count,
     .unit = "s",
     .access = Access::RootSeesMore,
     .meaning = "time until it starts",
     .source = "the file in Source"},
    {.name = "ScreenSaverExecutable",
     .access = Access::RootSeesMore,
     .meaning = "program",
     .source = "the file in Source"},
    {.name = "LockDelay",
     .type = Type::Count,
     .unit = "s",
     .access = Access::RootSeesMore,
     .meaning = "time from its start until it asks for the password",
     .source = "the file in Source"},
    {.name = "Desktop",
     .type = Type::Choice,
     .choices = "KDE|GNOME|MATE|Cinnamon|Xfce|XScreenSaver",
     .key = true,
     .meaning = "desktop that the settings belong to",
     .source = "where it was found"},
    {.name = "Source",
     .privacy = Privacy::Content,
     .meaning = "file with the settings",
     .source = "files in the home directories"},
};

inline constexpr Group kScreenSaverInfo{
    .id = 38,
    .name = "Screen Saver Info",
    .element = "ScreenSaverInfo",
    .about =
        "The settings of screen savers in the home directories, one instance per account and desktop with "
        "settings of its own. Settings that an account has not changed are unknown. Links, special files and "
        "files of other users are not followed, nor is what lies on another machine (`home-refused`).",
    .fields = kScreenSaverInfoFields,
    .columns = "UserName ScreenSaverActive ScreenSaverSecure Desktop",
};

}  // namespace schema
