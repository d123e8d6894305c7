#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvis/files/LookupBudget.h"
#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

struct Process {
    int pid = 0;
    std::string comm;  // the name that it gave itself, at most 15 bytes
    // The path of its program, without the suffix " (deleted)". Empty for a kernel thread and when the path is unknown.
    std::string exe;
    bool exeDenied = false;
    std::string args;  // separated by blanks, without secrets; cut when they are long
    std::string user;  // the name, or the number when there is none
    std::uint32_t uid = 0;

    // The last part of `exe`, or `comm` when `exe` is empty.
    std::string_view name() const;
};

// The running processes, read once from /proc.
class Processes {
  public:
    // REQUIRES: all arguments outlive this.
    Processes(const Root& root, const Settings::Processes& settings, LookupBudget& budget)
        : root_(root), settings_(settings), budget_(budget) {}

    // Sorted by pid.
    const std::vector<Process>& processes();

    // Why some processes could not be seen; empty when all could.
    const std::vector<Event>& events() const { return events_; }
    bool incomplete() const { return !events_.empty(); }

  private:
    void readWithinLimits();
    void read();
    void note(EventCode code, std::string path, std::string text);

    const Root& root_;
    const Settings::Processes& settings_;
    LookupBudget& budget_;
    bool isRead_ = false;
    std::vector<Process> processes_;
    std::vector<Event> events_;
};

// The arguments of a process, given with a NUL after each, separated by blanks and without secrets. "***" replaces the values
// of options and assignments whose names suggest a password, key or token ("--password=x", "--token x", "-Dx.key=v",
// "PGPASSWORD=x", "Authorization: x", "-px"), users and passwords in URLs, and text that looks like a key. When in doubt a
// value is replaced.
std::string argumentsWithoutSecrets(std::string_view arguments);

}  // namespace toolkit::quorvis
