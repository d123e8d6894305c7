// The progress of a scan, learnt from the lines that the scanner prints.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "cli/scan/Library.h"

namespace zavcli {

// The group whose end the message reports, such as "Processor"; nothing for every other message.
std::optional<std::string> finishedGroup(const Message& message);

// The bar in at most so many columns: "[######    ] 24/48 Processor".
std::string progressBar(int done, int total, std::string_view group, int columns);

// The bar on standard error. Nothing at all is written while it is disabled.
class Progress {
  public:
    explicit Progress(bool enabled) : enabled_(enabled) {}
    ~Progress() { hide(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Shows an empty bar for so many groups.
    void begin(int total);
    // Moves the bar when the message reports the end of a group.
    void hear(const Message& message);
    // Takes the bar away, so that other text can be printed; show() brings it back until end().
    void hide();
    void show();
    // Takes the bar away for good.
    void end();

  private:
    bool enabled_;
    bool shown_ = false;
    int total_ = 0;
    int done_ = 0;
    std::string group_;
};

}  // namespace zavcli
