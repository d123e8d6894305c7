// How the command ends when it cannot do its work.
#pragma once

#include <stdexcept>
#include <string>
#include <system_error>

namespace zavcli {

constexpr int kExitFailed = 1;    // the command failed
constexpr int kExitBadUsage = 2;  // the command line is wrong
constexpr int kExitUnread = 3;    // the inventory is written, but requested data could not be read

// Ends the command. The text is printed to standard error after "zav: "; the status becomes the exit status.
class Failure : public std::runtime_error {
  public:
    Failure(int status, const std::string& text) : std::runtime_error(text), status_(status) {}
    int status() const { return status_; }

  private:
    int status_;
};

// The description of an error number, in English in every locale.
inline std::string systemErrorText(int error) {
    return std::generic_category().message(error);
}

}  // namespace zavcli
