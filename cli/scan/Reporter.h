#pragma once

#include <string>

#include "cli/scan/Library.h"
#include "cli/scan/Progress.h"
#include "cli/scan/Toolkit.h"

namespace zavcli {

// How many of the library's messages are shown.
enum class Verbosity {
    Errors,   // level 0, without those that are normal on a machine with no installed toolkit
    Notable,  // levels 0 and 1
    Trace     // all, with level, component and function
};

// The line that is shown for a message, without line end; empty when it is not shown.
std::string messageLine(const Message& message, Verbosity verbosity, ToolkitSource source);

// Prints the library's messages to standard error and moves the progress bar.
class Reporter : public Listener {
  public:
    // REQUIRES: the progress outlives the reporter.
    Reporter(Verbosity verbosity, ToolkitSource source, Progress& progress)
        : verbosity_(verbosity), source_(source), progress_(progress) {}

    void hear(const Message& message) noexcept override;

  private:
    Verbosity verbosity_;
    ToolkitSource source_;
    Progress& progress_;
};

}  // namespace zavcli
