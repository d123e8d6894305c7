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
    std::string comm;  // what it calls itself, at most 15 bytes
    // The path of its program, without the mark that it was deleted; empty for a thread of the kernel, and
    // when the kernel does not tell.
    std::string exe;
    bool exeDenied = false;
    std::string args;  // joined by blanks, without secrets; the start of very long ones
    std::string user;  // the name, or the number of one without a name
    std::uint32_t uid = 0;

    // The last part of `exe`; what it calls itself when that is not known.
    std::string_view name() const;
};

// The running processes of the machine, read from /proc once.
class Processes {
  public:
    // REQUIRES: all arguments outlive this.
    Processes(const Root& root, const Settings::Processes& settings, LookupBudget& budget)
        : root_(root), settings_(settings), budget_(budget) {}

    // Sorted by pid.
    const std::vector<Process>& processes();

    // Of reading them; whether some could not be seen.
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

}  // namespace toolkit::quorvis
