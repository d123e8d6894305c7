#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace zavcli {

// What is wrong with a file.
class BadInventory : public std::runtime_error {
  public:
    BadInventory(std::size_t line, const std::string& reason) : std::runtime_error(reason), line_(line) {}
    // From 1; 0 if the whole file is meant.
    std::size_t line() const { return line_; }

  private:
    std::size_t line_;
};

}  // namespace zavcli
