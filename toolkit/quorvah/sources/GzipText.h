#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace toolkit::quorvah {

// Unpacks a gzip file of one or several members, at most `limit` bytes. What precedes damage is kept. Returns whether
// everything was unpacked. Throws std::bad_alloc.
bool gunzip(std::string_view packed, std::size_t limit, std::string& text);

}  // namespace toolkit::quorvah
