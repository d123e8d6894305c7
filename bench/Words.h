// What generated files are filled with, the same on every machine.
#pragma once

#include <cstdint>
#include <string>

namespace zavbench {

// Numbers that look random.
class Numbers {
  public:
    std::uint32_t below(std::uint32_t limit) {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>(state_ >> 33U) % limit;
    }

  private:
    std::uint64_t state_ = 42;
};

// That many words of a vocabulary of 16.
std::string words(Numbers& numbers, std::uint32_t count, const char* separator);

// The identifier of a signature; no two numbers share one.
std::string identifier(int number);

}  // namespace zavbench
