#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace toolkit::quorvis {

enum class Packing : std::uint8_t { Raw, Zlib };  // without and with a header and a checksum

// Unpacks the first `limit` bytes. False if the data is damaged. Throws std::bad_alloc.
bool inflate(std::string_view packed, Packing packing, std::uint64_t limit, std::string& content);

}  // namespace toolkit::quorvis
