// Deterministic content for generated files.
#pragma once

#include <cstdint>
#include <string>

namespace zavbench {

// A pseudo-random number generator with a fixed seed.
class Numbers {
  public:
    std::uint32_t below(std::uint32_t limit) {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>(state_ >> 33U) % limit;
    }

  private:
    std::uint64_t state_ = 42;
};

// `count` words of a vocabulary of 16.
std::string words(Numbers& numbers, std::uint32_t count, const char* separator);

// The identifier of a signature. Identifiers of distinct numbers are distinct.
std::string identifier(int number);

}  // namespace zavbench
