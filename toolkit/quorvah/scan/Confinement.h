#pragma once

#include <stdexcept>
#include <string>

namespace toolkit::quorvah {

// The sandbox is not whole, and the options do not allow to go on then.
class Unconfined : public std::runtime_error {
  public:
    explicit Unconfined(const std::string& missing);
};

// Gives up, for the rest of the process, what gathering groups does not need, and more memory than it may take. Returns
// what could not be given up; empty when nothing is missing.
std::string enterSandbox();

}  // namespace toolkit::quorvah
