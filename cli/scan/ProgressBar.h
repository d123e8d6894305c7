// The progress of a scan, taken from the lines that the scanner prints.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cli/scan/LibraryHandle.h"

namespace zavcli {

// The group that the scanner has finished according to the message, such as "Processor". Nothing for other messages.
std::optional<std::string> finishedGroup(const LogMessage& message);

// How far the evaluation of signatures is according to the message, such as "progress: 34 percent". Nothing for other messages.
std::optional<int> evaluatedPercent(const LogMessage& message);

// The bar in at most that many columns, such as "[######    ] 24/48 Processor".
std::string progressBar(int done, int total, std::string_view label, int columns);
// The bar of a hundred parts, such as "[######    ] 60 %".
std::string percentBar(int percent, int columns);

// Shows the bar on standard error. A disabled bar writes nothing.
class ProgressBar {
  public:
    explicit ProgressBar(bool enabled) : enabled_(enabled) {}
    ~ProgressBar() { hide(); }
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    bool isEnabled() const { return enabled_; }
    // Shows an empty bar for that many groups.
    void begin(int total);
    // Shows an empty bar that counts hundredths.
    void beginPercent();
    // Advances the bar if the message reports a finished group or a higher percentage.
    void onMessage(const LogMessage& message);
    // Erases the bar so that other text can be printed.
    void hide();
    // Draws the bar again, unless it has ended.
    void show();
    void end();

  private:
    bool enabled_;
    bool shown_ = false;
    bool percent_ = false;
    int total_ = 0;
    int done_ = 0;
    std::string label_;
};

}  // namespace zavcli
