// Records of the form of /var/log/wtmp for tests.
#pragma once

#include <cstdint>
#include <string>

namespace toolkit::quorvah {

inline void putNumber(std::string& record, std::size_t at, std::size_t width, std::uint64_t number,
                      bool big) {
    for (std::size_t i = 0; i < width; ++i)
        record[at + (big ? width - 1 - i : i)] = static_cast<char>(number >> (8 * i) & 0xFFU);
}

inline std::string loginRecord(unsigned type, const std::string& line, const std::string& user,
                               const std::string& host, std::uint64_t time, bool wide = false,
                               bool big = false) {
    std::string record(wide ? 400 : 384, '\0');
    putNumber(record, 0, 2, type, big);
    record.replace(8, line.size(), line);
    record.replace(44, user.size(), user);
    record.replace(76, host.size(), host);
    putNumber(record, wide ? 344 : 340, wide ? 8 : 4, time, big);
    return record;
}

inline constexpr unsigned kBootRecord = 2;
inline constexpr unsigned kLoginRecord = 7;
inline constexpr unsigned kLogoutRecord = 8;

}  // namespace toolkit::quorvah
