#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kLastLoggedUserFields[] = {
    {.name = "Name",
     .privacy = Privacy::Name,
     .meaning = "name of the account",
     .source = "`/var/log/wtmp`; `/var/lib/wtmpdb/wtmp.db`"},
    {.name = "UserID", .type = Type::Count, .meaning = "number of the account", .source = "`/etc/passwd`"},
    {.name = "LastLogin",
     .type = Type::Time,
     .meaning = "time of the login",
     .source = "`/var/log/wtmp`; `/var/lib/wtmpdb/wtmp.db`"},
    {.name = "LogoutTime",
     .type = Type::Time,
     .meaning = "time of the logout, or of the end of the system; empty while the user is logged in",
     .source = "`/var/log/wtmp`; `/var/lib/wtmpdb/wtmp.db`"},
    {.name = "Terminal",
     .meaning = "terminal of the login, `tty1`, `pts/0` and so on",
     .source = "`/var/log/wtmp`; `/var/lib/wtmpdb/wtmp.db`"},
    {.name = "RemoteHost",
     .privacy = Privacy::Address,
     .meaning = "machine from which the user logged in",
     .source = "`/var/log/wtmp`; `/var/lib/wtmpdb/wtmp.db`"},
    {.name = "SessionType",
     .type = Type::Choice,
     .choices = "Console|Graphical|Remote|Terminal",
     .meaning = "kind of login",
     .source = "the terminal and the remote host"},
};

inline constexpr Group kLastLoggedUser{
    .id = 37,
    .name = "Last Logged User",
    .element = "LastLoggedUser",
    .about = "The newest login that the system has recorded. One instance, or none if there is no record.",
    .fields = kLastLoggedUserFields,
    .columns = "Name LastLogin LogoutTime Terminal RemoteHost",
};

}  // namespace schema
