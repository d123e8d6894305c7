#pragma once

#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/machine/Root.h"

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
class OutOfTime : public std::exception {
  public:
    const char* what() const noexcept override { return "out of time"; }
};

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

    // When a group that is gathered where it cannot be killed must be done; none for others.
    std::optional<std::chrono::steady_clock::time_point> deadline;
    // Throws OutOfTime after the deadline.
    void checkTime() const {
        if (deadline && std::chrono::steady_clock::now() >= *deadline) throw OutOfTime();
    }

    Summary summary;

  private:
    Options options_;
    Root root_;
};

}  // namespace toolkit::quorvah
