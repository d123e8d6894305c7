#pragma once

#include <cstdint>
#include <string>

namespace toolkit {

// "2026-11-21T06:14:45Z" for a count of seconds since 1970; empty outside the years 0 to 9999.
std::string isoTime(std::int64_t seconds);

}  // namespace toolkit
