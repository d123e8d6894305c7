// The lines that a scanner prints, which the library passes on in messages.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/LibraryHandle.h"

namespace zavcli {

// The line if the message passes on a line of a scanner. It is valid as long as the message.
std::optional<std::string_view> scannerLine(const LogMessage& message);

// Collects the lines of the scanner and forwards every message to the next listener.
class ScannerOutput : public LogListener {
  public:
    // REQUIRES: `next` outlives this object.
    explicit ScannerOutput(LogListener& next) : next_(next) {}

    void onMessage(const LogMessage& message) noexcept override;

    // The first 1000 lines since the last clear().
    const std::vector<std::string>& lines() const { return lines_; }
    void clear() { lines_.clear(); }

  private:
    LogListener& next_;
    std::vector<std::string> lines_;
};

}  // namespace zavcli
