#pragma once

#include <stdexcept>
#include <string>

namespace zavcli {

constexpr int kExitFailed = 1;    // the inventory failed
constexpr int kExitBadUsage = 2;  // the command line is wrong
constexpr int kExitUnread =
    3;  // the inventory is written, but something that was asked for could not be read

// Ends the command: its text follows "zav: " on standard error, its status becomes the exit status.
class Failure : public std::runtime_error {
  public:
    Failure(int status, const std::string& text) : std::runtime_error(text), status_(status) {}
    int status() const { return status_; }

  private:
    int status_;
};

}  // namespace zavcli
