#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// What the command line asks for.
struct Options {
    std::string config;
    std::string output;
    std::string root;  // empty for the live machine
    std::string ids;   // the directory of the name databases; empty for the host's own
    bool pretty = false;
    bool raw = false;
    bool noVolatile = false;
    bool sanitize = false;
    bool sandboxOptional = false;  // whether to go on where the sandbox is not whole
};

// How the run went, for the group that tells of it.
struct Summary {
    std::int64_t startTime = 0;  // seconds since 1970
    std::int64_t endTime = 0;
    std::int64_t elapsed = 0;  // milliseconds
    std::vector<std::string> requested;
    std::vector<std::string> complete;
    std::vector<std::string> partial;  // "Name=reason"
    std::vector<std::string> unread;   // the same, and so in the next
    std::vector<std::string> notApplicable;
    std::vector<std::string> unsupported;
    std::vector<std::string> warnings;
};

// A group has used up its time.
using OutOfTime = Root::OutOfTime;

// What groups gather from.
class Scan {
  public:
    // Throws std::system_error when options.root is no directory.
    explicit Scan(Options options);

    const Options& options() const { return options_; }
    const Root& root() const { return root_; }

    // Text from firmware without the blanks at its end; empty for what makers leave in it in place of a
    // value, unless --raw keeps that.
    std::string firmwareText(std::string text) const;

    // By when a group must be done; none for any time. After it every look at the tree throws OutOfTime, and so does
    // checkTime(), which is for loops that look at nothing there.
    void limitTime(std::optional<std::chrono::steady_clock::time_point> deadline) { root_.watch(deadline); }
    void checkTime() const { root_.checkTime(); }

    Summary summary;

  private:
    Options options_;
    Root root_;
};

}  // namespace toolkit::quorvah
