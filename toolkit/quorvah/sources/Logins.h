// Who logged in when, from the files in which login programs record it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/InputFile.h"
#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

struct Login {
    std::string user;
    std::int64_t time = 0;  // seconds since 1970
    std::optional<std::int64_t> logout;
    std::string terminal;
    std::string host;  // from which; empty if it was this machine
};

// The size of the records in a file of the form of /var/log/wtmp, which is 384 bytes on most machines.
std::size_t loginRecordSize(std::uint64_t fileSize);

// The newest login in records of this size and of any byte order, with its end if that is recorded. A last record that is cut
// off is ignored.
std::optional<Login> newestLogin(std::string_view records, std::size_t recordSize);

// The newest login of all files of the machine. `complete` becomes false if a file is damaged or larger than what is
// read of it.
std::optional<Login> lastLogin(const Root& root, bool& complete);

// The times of the last logins by account, from /var/log/lastlog or its successor.
class LastLogins {
  public:
    explicit LastLogins(const Root& root);

    std::optional<std::int64_t> of(const std::string& name, std::uint32_t uid);

  private:
    InputFile file_;
    std::vector<Login> database_;
};

}  // namespace toolkit::quorvah
