#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvah {

// The value of a key in a pool of key-value pairs that Hyper-V sends to its guests; empty if there is none. A pool is a
// file of records with a key of 512 bytes and a value of 2,048 bytes, each ended by a zero byte.
std::string hyperVValue(std::string_view pool, std::string_view key);

}  // namespace toolkit::quorvah
