#include <string>

#include "schema/groups/LastLoggedUser.h"
#include "toolkit/machine/text/IsoTime.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/Accounts.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/Logins.h"

namespace toolkit::quorvah {

namespace {

std::string_view sessionType(const Login& login) {
    if (!login.host.empty()) return "Remote";
    if (login.terminal.starts_with(':') || login.terminal.starts_with("seat")) return "Graphical";
    if (login.terminal.starts_with("tty") || login.terminal.starts_with("hvc") || login.terminal == "console")
        return "Console";
    return login.terminal.starts_with("pts/") ? "Terminal" : "";
}

constexpr const char* kSources[] = {"/var/log", "/run/utmp", "/var/lib/lastlog", "/var/lib/wtmpdb"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    bool complete = true;
    const std::optional<Login> login = lastLogin(root, complete);
    if (!complete) data.partial("logins-broken");
    if (!login) return;
    Instance& user = data.add(login->user);
    for (const Account& account : readAccounts(root)) {
        if (account.name != login->user) continue;
        user.set("UserID", account.uid);
        break;
    }
    user.set("LastLogin", isoTime(login->time));
    if (login->logout) user.set("LogoutTime", isoTime(*login->logout));
    user.set("Terminal", login->terminal);
    user.set("RemoteHost", login->host);
    user.set("SessionType", sessionType(*login));
}

}  // namespace

constexpr Group kLastLoggedUser{.displayName = "Last Logged User",
                                .xmlName = "LastLoggedUser",
                                .fields = schema::kLastLoggedUser.fields,
                                .gather = gather,
                                .sources = kSources};

}  // namespace toolkit::quorvah
