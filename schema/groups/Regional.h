#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kRegionalFields[] = {
    {.name = "Locale",
     .meaning = "default locale, `en_GB.UTF-8`",
     .source = "`/etc/default/locale`; `/etc/locale.conf`"},
    {.name = "CurrentTimeZone",
     .type = Type::Integer,
     .unit = "minutes",
     .meaning = "difference from UTC, positive east of it",
     .source = "`/etc/localtime`"},
    {.name = "Language", .meaning = "language of the locale", .source = "the locale"},
    {.name = "Territory", .meaning = "territory of the locale", .source = "the locale"},
    {.name = "CodeSet", .meaning = "character set of the locale", .source = "the locale"},
    {.name = "TimeZoneName",
     .meaning = "name of the time zone, `Europe/London`",
     .source = "`/etc/timezone`; `/etc/localtime`"},
    {.name = "DaylightInEffect",
     .type = Type::Boolean,
     .isVolatile = true,
     .meaning = "whether daylight saving time applies",
     .source = "`/etc/localtime`"},
    {.name = "KeyboardLayout",
     .list = true,
     .meaning = "layout of the keyboard",
     .source = "`/etc/default/keyboard`; `/etc/vconsole.conf`"},
    {.name = "KeyboardModel",
     .meaning = "model of the keyboard",
     .source = "`/etc/default/keyboard`; `/etc/vconsole.conf`"},
    {.name = "HardwareClock",
     .type = Type::Choice,
     .choices = "UTC|LOCAL",
     .meaning = "whether the hardware clock runs in UTC or in local time",
     .source = "`/etc/adjtime`"},
};

inline constexpr Group kRegional{
    .id = 15,
    .name = "Regional",
    .element = "Regional",
    .about = "Language, time zone and keyboard. One instance.",
    .fields = kRegionalFields,
    .columns = "Locale TimeZoneName KeyboardLayout CodeSet",
};

}  // namespace schema
