// The circumstances of a scan.
#pragma once

#include <chrono>
#include <ctime>
#include <string>

namespace zavcli {

struct ScanFacts {
    std::string program;         // "zav 0.1.0"
    std::string time;            // the start of the scan, ISO 8601 in UTC
    long long milliseconds = 0;  // the duration of the scan
    std::string toolkit;         // the directory of the scanner
    std::string root;            // the scanned directory; empty for this machine
    std::time_t seconds = 0;     // the start of the scan since the epoch
    std::string host = {};       // the name of the scanned machine; empty if unknown or not asked for
};

// Records the circumstances of a scan that starts now.
class ScanTimer {
  public:
    // `root` is the scanned directory, empty for this machine.
    ScanTimer(std::string toolkit, std::string root);

    // REQUIRES: the scan has ended.
    ScanFacts facts() const;

  private:
    using Clock = std::chrono::steady_clock;

    std::string toolkit_;
    std::string root_;
    std::time_t time_;
    Clock::time_point begin_;
};

}  // namespace zavcli
