#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/ZAVlog.h"
#include "kest/ChildProcess.h"

namespace zav {

// One run of a scanner, in three steps: launch it, drain() its output, check() how it ended. Messages go to
// the log under the name of the calling function; log may be null.
class ScannerProcess {
  public:
    // The first of the arguments is the path of the scanner; installDir goes in front of the child's library search
    // path. REQUIRES: log and function outlive this.
    ScannerProcess(ZAVlog* log, const char* function, const std::vector<std::string>& arguments,
                   const std::wstring& installDir);

    // False when the scanner could not be launched, which is logged with the reason; the steps below are then not to
    // be taken.
    bool started() const { return child_ != nullptr; }

    // Logs each line of the scanner's standard output as soon as its line feed arrives, and waits for the
    // scanner's end. Returns its status: 0 for a scanner that ended well.
    int drain();

    // Logs how the scanner ended and returns its exit code.
    int check();

  private:
    void logLines(std::string_view output, std::string& line) const;

    ZAVlog& log_;
    const char* function_;
    std::unique_ptr<kest::ChildProcess> child_;
};

}  // namespace zav
