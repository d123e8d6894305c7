#include "toolkit/quorvah/sources/Accounts.h"

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

constexpr std::uint64_t kMaxId = 0xFFFFFFFE;

bool readId(std::string_view text, std::uint32_t& id) {
    const Count number = readCount(text);
    if (number.value_or(kMaxId + 1) > kMaxId) return false;
    id = static_cast<std::uint32_t>(*number);
    return true;
}

// Entries that begin with these characters are for directory services.
bool isName(std::string_view name) {
    return !name.empty() && name.front() != '+' && name.front() != '-' && name.front() != '#';
}

bool parseAccount(std::string_view line, Account& account) {
    account.name = takeField(line, ':');
    takeField(line, ':');
    const bool numbers =
        readId(takeField(line, ':'), account.uid) && readId(takeField(line, ':'), account.gid);
    std::string_view description = takeField(line, ':');
    account.description = takeField(description, ',');
    account.home = takeField(line, ':');
    account.shell = line;
    return isName(account.name) && numbers;
}

bool parseGroup(std::string_view line, AccountGroup& group) {
    group.name = takeField(line, ':');
    takeField(line, ':');
    const bool number = readId(takeField(line, ':'), group.gid);
    while (!line.empty()) {
        const std::string_view member = takeField(line, ',');
        if (!member.empty()) group.members.emplace_back(member);
    }
    return isName(group.name) && number;
}

bool parseStatus(std::string_view line, AccountStatus& status) {
    status.name = takeField(line, ':');
    const std::string_view password = takeField(line, ':');
    status.locked = password.starts_with('!') || password.starts_with('*');
    status.lastChange = readCount(takeField(line, ':'));
    takeField(line, ':');
    status.maxAge = readCount(takeField(line, ':'));
    takeField(line, ':');
    takeField(line, ':');
    status.expiry = readCount(takeField(line, ':'));
    return isName(status.name);
}

}  // namespace

std::vector<Account> parseAccounts(std::string_view passwd) {
    return parseLines<Account>(passwd, parseAccount);
}

std::vector<AccountGroup> parseAccountGroups(std::string_view group) {
    return parseLines<AccountGroup>(group, parseGroup);
}

std::vector<AccountStatus> parseAccountStatus(std::string_view shadow) {
    return parseLines<AccountStatus>(shadow, parseStatus);
}

std::vector<Account> readAccounts(const Root& root) {
    return parseAccounts(root.read("/etc/passwd").value_or(""));
}

SystemAccounts::SystemAccounts(const Root& root) {
    const Count first = readCount(valueForKey(root.read("/etc/login.defs").value_or(""), "UID_MIN"));
    if (first) first_ = *first;
}

bool SystemAccounts::contains(std::uint32_t uid) const {
    constexpr std::uint32_t kNobody = 65534;
    return uid < first_ || uid == kNobody;
}

}  // namespace toolkit::quorvah
