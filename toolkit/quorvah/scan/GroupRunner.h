#pragma once

#include <chrono>
#include <functional>
#include <span>

#include "toolkit/quorvah/report/GroupResult.h"
#include "toolkit/quorvah/report/Report.h"
#include "toolkit/quorvah/sources/Scan.h"

namespace toolkit::quorvah {

// How long gathering may take.
struct Limits {
    std::chrono::milliseconds group{10'000};
    std::chrono::milliseconds run{60'000};
};

// Makes what was gathered ready for the output file; called where it was gathered.
using Prepare = std::function<void(Report& report)>;

// What becomes of each group; in the order of the groups.
using OnResult = std::function<void(GroupResult&& result)>;

// Gathers the groups in a child process, which is killed when a group takes too long: that group then has no
// instances and is unread by reason of "timeout", and gathering goes on with the next one. One that looks at the clock,
// as every look at the tree does, ends before that and keeps what it has. A group whose code dies
// costs no more than its own instances either ("failed"). A group that lacked a permission is partial by reason of
// "permission" with what it has, and unread when it has nothing.
//
// The child enters the sandbox. Where that is not whole, Unconfined is thrown unless the options allow to go on; then the
// scan's summary has a warning.
//
// Where all groups only read plain files of this very machine, no child is started: then a group that takes too
// long ends by itself and keeps what it has. Throws std::system_error when no process can be started.
void gatherGroups(Scan& scan, std::span<const Group* const> groups, const Limits& limits,
                  const Prepare& prepare, const OnResult& onResult);

// Whether these groups are gathered without a child. Then it is for the caller to enter the sandbox.
bool needNoChild(const Scan& scan, std::span<const Group* const> groups);

// Tells that the sandbox is not whole.
void tellOfSandbox(Scan& scan, const std::string& missing);

}  // namespace toolkit::quorvah
