#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kUserAccountInfoFields[] = {
    {.name = "UserID",
     .type = Type::Count,
     .key = true,
     .meaning = "number of the account",
     .source = "`/etc/passwd`"},
    {.name = "Name",
     .key = true,
     .privacy = Privacy::Name,
     .meaning = "name of the account",
     .source = "`/etc/passwd`"},
    {.name = "Description",
     .privacy = Privacy::Name,
     .meaning = "full name of the person",
     .source = "`/etc/passwd`"},
    {.name = "HomeDirectory",
     .privacy = Privacy::Path,
     .meaning = "home directory",
     .source = "`/etc/passwd`"},
    {.name = "Disabled",
     .type = Type::Boolean,
     .access = Access::RootOnly,
     .meaning = "whether no password is accepted, or the account has expired",
     .source = "`/etc/shadow`"},
    {.name = "PasswordLastChange",
     .type = Type::Time,
     .access = Access::RootOnly,
     .meaning = "date of the last change of the password",
     .source = "`/etc/shadow`"},
    {.name = "PasswordExpires",
     .type = Type::Time,
     .access = Access::RootOnly,
     .meaning = "date on which the password must be changed",
     .source = "`/etc/shadow`"},
    {.name = "GroupId",
     .type = Type::Count,
     .meaning = "number of the account's own group",
     .source = "`/etc/passwd`"},
    {.name = "GroupName",
     .privacy = Privacy::Name,
     .meaning = "name of the account's own group",
     .source = "`/etc/group`"},
    {.name = "Groups",
     .list = true,
     .privacy = Privacy::Name,
     .meaning = "other groups of the account",
     .source = "`/etc/group`"},
    {.name = "LoginShell", .meaning = "program that a login starts", .source = "`/etc/passwd`"},
    {.name = "SystemAccount",
     .type = Type::Boolean,
     .meaning = "whether the account belongs to the system, not to a person",
     .source = "`/etc/login.defs`"},
    {.name = "LastLogin",
     .type = Type::Time,
     .isVolatile = true,
     .meaning = "time of the last login",
     .source = "`/var/log/lastlog`; `/var/lib/lastlog/lastlog2.db`; `/var/log/wtmp`"},
};

inline constexpr Group kUserAccountInfo{
    .id = 36,
    .name = "User Account Info",
    .element = "UserAccountInfo",
    .about =
        "The accounts in `/etc/passwd`. Accounts of a directory service are not listed. One instance per "
        "account.",
    .fields = kUserAccountInfoFields,
    .columns = "Name UserID Disabled HomeDirectory LastLogin",
};

}  // namespace schema
