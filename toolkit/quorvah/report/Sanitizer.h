#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "toolkit/quorvah/report/GroupData.h"

namespace toolkit::quorvah {

// SipHash-2-4 of a text.
std::uint64_t sipHash(const std::array<std::uint64_t, 2>& key, std::string_view text);

// Hides what tells a machine and its users apart, so that a report can be shared: the same value becomes the
// same hash wherever it stands in the report. The key is drawn anew for every Sanitizer and kept nowhere, so
// nobody can find a value by trying, nor match two reports.
class Sanitizer {
  public:
    // Throws std::system_error when the system has no random numbers to give.
    Sanitizer();

    // Hashes the values of the private fields; unknown ones stay unknown.
    void hide(GroupData& data) const;

    // One ;-joined value after the other.
    std::string hashed(std::string_view values) const;

  private:
    std::array<std::uint64_t, 2> key_{};
};

// Empties the fields that change without the machine being changed.
void dropVolatile(GroupData& data);

}  // namespace toolkit::quorvah
