#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "schema/groups/UserAccountInfo.h"
#include "toolkit/machine/text/IsoTime.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/Accounts.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/Logins.h"

namespace toolkit::quorvah {

namespace {

constexpr std::uint64_t kSecondsPerDay = 86400;

// "2026-11-21" for a count of days since 1970.
std::string dateOf(Count day) {
    const Count seconds = product(day, kSecondsPerDay);
    return seconds ? isoTime(static_cast<std::int64_t>(*seconds)).substr(0, 10) : std::string();
}

class GroupNames {
  public:
    explicit GroupNames(const Root& root)
        : groups_(parseAccountGroups(root.read("/etc/group").value_or(""))) {
        for (const AccountGroup& group : groups_) {
            names_.emplace(group.gid, group.name);
            for (const std::string& member : group.members) memberships_[member].push_back(group.name);
        }
    }

    std::string name(std::uint32_t gid) const {
        const auto found = names_.find(gid);
        return found == names_.end() ? std::string() : found->second;
    }
    // Other groups than the account's own.
    std::vector<std::string> of(const std::string& account) const {
        const auto found = memberships_.find(account);
        return found == memberships_.end() ? std::vector<std::string>() : found->second;
    }

  private:
    std::vector<AccountGroup> groups_;
    std::map<std::uint32_t, std::string> names_;
    std::map<std::string, std::vector<std::string>> memberships_;
};

// The hashes of the passwords do not stay in memory.
std::map<std::string, AccountStatus> readStatus(const Root& root) {
    std::string shadow = root.read("/etc/shadow").value_or("");
    std::map<std::string, AccountStatus> accounts;
    for (AccountStatus& status : parseAccountStatus(shadow)) accounts.emplace(status.name, status);
    ::explicit_bzero(shadow.data(), shadow.size());
    return accounts;
}

void setStatus(const AccountStatus& status, std::optional<std::int64_t> now, Instance& account) {
    constexpr std::uint64_t kNever = 99999;
    const Count expiry = product(status.expiry, kSecondsPerDay);
    const bool expired = expiry && now && *expiry <= static_cast<std::uint64_t>(*now);
    account.set("Disabled", status.locked || expired);
    // Day 0 means that the password must be changed at the next login.
    if (status.lastChange.value_or(0) == 0) return;
    account.set("PasswordLastChange", dateOf(status.lastChange));
    if (status.maxAge.value_or(kNever) < kNever)
        account.set("PasswordExpires", dateOf(sum(status.lastChange, status.maxAge)));
}

constexpr const char* kSources[] = {"/etc/passwd"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const GroupNames groups(root);
    const SystemAccounts system(root);
    const std::map<std::string, AccountStatus> statuses = readStatus(root);
    const std::optional<std::int64_t> now = observationTime(root);
    LastLogins logins(root);
    for (const Account& entry : readAccounts(root)) {
        context.checkTime();
        Instance& account = data.add(std::to_string(entry.uid));
        account.set("Name", entry.name);
        account.set("Description", entry.description);
        account.set("HomeDirectory", entry.home);
        const auto status = statuses.find(entry.name);
        if (status != statuses.end()) setStatus(status->second, now, account);
        account.set("GroupId", entry.gid);
        account.set("GroupName", groups.name(entry.gid));
        account.set("Groups", groups.of(entry.name));
        account.set("LoginShell", entry.shell);
        account.set("SystemAccount", system.contains(entry.uid));
        const std::optional<std::int64_t> login = logins.of(entry.name, entry.uid);
        if (login) account.set("LastLogin", isoTime(*login));
    }
}

}  // namespace

constexpr Group kUserAccountInfo{.displayName = "User Account Info",
                                 .xmlName = "UserAccountInfo",
                                 .fields = schema::kUserAccountInfo.fields,
                                 .gather = gather,
                                 .sources = kSources};

}  // namespace toolkit::quorvah
