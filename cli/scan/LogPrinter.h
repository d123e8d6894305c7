#pragma once

#include <string>

#include "cli/scan/LibraryHandle.h"
#include "cli/scan/ProgressBar.h"
#include "cli/scan/Toolkit.h"

namespace zavcli {

// Which messages of the library are shown.
enum class Verbosity {
    Errors,   // level 0, except messages that are normal on a machine without an installed toolkit
    Notable,  // levels 0 and 1
    Trace     // all levels, with level, component and function
};

// The line to show for a message, without line feed. Empty if the message is not shown.
std::string messageLine(const LogMessage& message, Verbosity verbosity, ToolkitSource source);

// Prints the messages of the library to standard error and advances the progress bar.
class LogPrinter : public LogListener {
  public:
    // REQUIRES: the progress bar outlives the printer.
    LogPrinter(Verbosity verbosity, ToolkitSource source, ProgressBar& progress)
        : verbosity_(verbosity), source_(source), progress_(progress) {}

    void onMessage(const LogMessage& message) noexcept override;

  private:
    Verbosity verbosity_;
    ToolkitSource source_;
    ProgressBar& progress_;
};

}  // namespace zavcli
