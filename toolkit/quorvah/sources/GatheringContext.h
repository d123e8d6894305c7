#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/sources/DeviceNameDatabase.h"

namespace toolkit::quorvah {

// The options of the command line.
struct Options {
    std::string config;
    std::string output;
    std::string root;    // empty for the live machine
    std::string record;  // a new file for what the scan reads; empty for none
    std::string ids;     // the directory of the device name databases; empty for those of the host
    bool pretty = false;
    bool raw = false;
    bool emptySlots = false;
    bool noVolatile = false;
    bool sanitize = false;
    bool sandboxOptional = false;  // whether the scan goes on if the sandbox is incomplete
};

// The outcome of the scan so far, which the group ScanInfo reports. The lists contain XML names of groups.
struct ScanSummary {
    std::int64_t startTime = 0;  // seconds since 1970
    std::int64_t endTime = 0;    // seconds since 1970
    std::int64_t elapsed = 0;    // milliseconds
    std::vector<std::string> requested;
    std::vector<std::string> complete;
    std::vector<std::string> partial;        // "Name=reason"
    std::vector<std::string> unread;         // "Name=reason"
    std::vector<std::string> notApplicable;  // "Name=reason"
    std::vector<std::string> unsupported;
    std::vector<std::string> warnings;
};

// Thrown when a group has exceeded its time.
using OutOfTime = Root::OutOfTime;

// The context in which groups are gathered: the scanned tree, the options, and the time limit.
class GatheringContext {
  public:
    // Throws std::system_error if options.root is not a directory.
    explicit GatheringContext(Options options);

    const Options& options() const { return options_; }
    const Root& root() const { return root_; }
    // Writes down what is read from now on. REQUIRES: the recorder lives as long as this object.
    void record(Recorder* recorder) { root_.record(recorder); }

    DeviceNameDatabase& pciNames() const { return pciNames_; }
    DeviceNameDatabase& usbNames() const { return usbNames_; }

    // A text from firmware without trailing blanks. Empty for a placeholder, unless the option --raw keeps it.
    std::string firmwareText(std::string text) const;

    // Sets the time after which every look at the tree throws OutOfTime. checkTime() throws it too, for loops that do
    // not look at the tree.
    void limitTime(std::optional<std::chrono::steady_clock::time_point> deadline) { root_.watch(deadline); }
    void checkTime() const { root_.checkTime(); }

    ScanSummary summary;

  private:
    Options options_;
    Root root_;
    mutable DeviceNameDatabase pciNames_;
    mutable DeviceNameDatabase usbNames_;
};

}  // namespace toolkit::quorvah
