#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "toolkit/quorvah/report/GroupData.h"

namespace toolkit::quorvah {

// The SipHash-2-4 of a text.
std::uint64_t sipHash(const std::array<std::uint64_t, 2>& key, std::string_view text);

// Hides what identifies the machine or its users, so that the output can be shared. Equal values get equal hashes
// within a scan. Each Sanitizer has a random key that it never reveals, so hashes cannot be reversed by trying values
// or compared across scans.
class Sanitizer {
  public:
    // Throws std::system_error if the system provides no random numbers.
    Sanitizer();

    // Hashes the values of the private fields as their class of privacy says. Unknown values stay unknown.
    void hide(GroupData& data) const;

    // The hashes of values that are joined by ";".
    std::string hashed(std::string_view values) const;
    // Paths that are joined by ";", with hashes in place of all names that not most systems have: "/home/0123456789abcdef".
    std::string hashedPaths(std::string_view paths) const;

  private:
    void appendHash(std::string& text, std::string_view value) const;

    std::array<std::uint64_t, 2> key_{};
};

// Empties the volatile fields.
void dropVolatile(GroupData& data);

}  // namespace toolkit::quorvah
