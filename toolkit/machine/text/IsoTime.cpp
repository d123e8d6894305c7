#include "toolkit/machine/text/IsoTime.h"

#include <chrono>

namespace toolkit {
namespace {

// snprintf and gmtime_r would take longer than everything else that is done for a package.
void putDigits(std::string& text, std::size_t at, std::size_t width, std::int64_t value) {
    for (std::size_t i = width; i-- > 0; value /= 10) text[at + i] = static_cast<char>('0' + value % 10);
}

constexpr std::int64_t kFirst = -62'167'219'200;  // 0000-01-01
constexpr std::int64_t kLast = 253'402'300'799;   // the end of 9999-12-31

}  // namespace

std::string isoTime(std::int64_t seconds) {
    if (seconds < kFirst || seconds > kLast) return {};
    const std::chrono::sys_seconds time{std::chrono::seconds(seconds)};
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date(day);
    const std::int64_t ofDay = (time - day).count();
    std::string text = "0000-00-00T00:00:00Z";
    putDigits(text, 0, 4, static_cast<int>(date.year()));
    putDigits(text, 5, 2, static_cast<unsigned>(date.month()));
    putDigits(text, 8, 2, static_cast<unsigned>(date.day()));
    putDigits(text, 11, 2, ofDay / 3600);
    putDigits(text, 14, 2, ofDay / 60 % 60);
    putDigits(text, 17, 2, ofDay % 60);
    return text;
}

}  // namespace toolkit
