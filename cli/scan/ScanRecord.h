#pragma once

#include <chrono>
#include <ctime>
#include <string>

#include "cli/scan/Model.h"

namespace zavcli {

// Notes the circumstances of a scan that begins now.
class ScanRecord {
  public:
    // `root` is the scanned directory, empty for this machine.
    ScanRecord(std::string toolkit, std::string root);

    // As they are when the scan has just ended.
    ScanFacts facts() const;

  private:
    using Clock = std::chrono::steady_clock;

    std::string toolkit_;
    std::string root_;
    std::time_t time_;
    Clock::time_point begin_;
};

}  // namespace zavcli
