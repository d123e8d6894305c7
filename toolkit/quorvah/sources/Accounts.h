// The accounts in the files of the machine. Accounts of a directory service are not in them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

struct Account {
    std::string name;
    std::uint32_t uid = 0;
    std::uint32_t gid = 0;
    std::string description;  // the full name only
    std::string home;
    std::string shell;
};

struct AccountGroup {
    std::string name;
    std::uint32_t gid = 0;
    std::vector<std::string> members;
};

// What /etc/shadow says about an account, except for the hash of its password. Days are counted from 1970.
struct AccountStatus {
    std::string name;
    bool locked = false;  // whether no password is accepted
    Count lastChange;     // day of the last change of the password
    Count maxAge;         // days after which it must be changed
    Count expiry;         // day from which the account is disabled
};

// Lines of another form are skipped, and so are entries that refer to a directory service.
std::vector<Account> parseAccounts(std::string_view passwd);
std::vector<AccountGroup> parseAccountGroups(std::string_view group);
std::vector<AccountStatus> parseAccountStatus(std::string_view shadow);

std::vector<Account> readAccounts(const Root& root);

// Whether an account belongs to the system and not to a person: its number is below the first one that the
// system gives to people.
class SystemAccounts {
  public:
    explicit SystemAccounts(const Root& root);
    bool contains(std::uint32_t uid) const;

  private:
    std::uint64_t first_ = 1000;
};

}  // namespace toolkit::quorvah
