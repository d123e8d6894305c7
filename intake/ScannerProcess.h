#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/ZAVlog.h"
#include "kest/ChildProcess.h"

namespace zav {

// One run of a scanner in three steps: the constructor starts it, drain() reads its output, check() evaluates its exit
// status. Messages are logged under the name of the calling function. log may be null.
class ScannerProcess {
  public:
    // The first argument is the path of the scanner. installDir is prepended to the child's library search path.
    // REQUIRES: log and function outlive this object.
    ScannerProcess(ZAVlog* log, const char* function, const std::vector<std::string>& arguments,
                   const std::wstring& installDir);

    // False when the scanner could not be started, which the constructor logs with the reason. drain() and check()
    // must then not be called.
    bool started() const { return child_ != nullptr; }

    // Logs each line of the scanner's standard output as soon as its line feed arrives, waits for the scanner, and
    // returns its exit status.
    int drain();

    // Logs the scanner's exit status and returns it.
    int check();

  private:
    void logLines(std::string_view output, std::string& line) const;

    ZAVlog& log_;
    const char* function_;
    std::unique_ptr<kest::ChildProcess> child_;
};

}  // namespace zav
