#include "toolkit/machine/IsoTime.h"

#include <ctime>

namespace toolkit {
namespace {

// snprintf would take longer than all else that is done for a package.
void putDigits(std::string& text, std::size_t at, std::size_t width, int value) {
    for (std::size_t i = width; i-- > 0; value /= 10) text[at + i] = static_cast<char>('0' + value % 10);
}

}  // namespace

std::string isoTime(std::int64_t seconds) {
    const std::time_t time = seconds;
    std::tm fields{};
    if (gmtime_r(&time, &fields) == nullptr || fields.tm_year < -1900 || fields.tm_year > 9999 - 1900)
        return {};
    std::string text = "0000-00-00T00:00:00Z";
    putDigits(text, 0, 4, fields.tm_year + 1900);
    putDigits(text, 5, 2, fields.tm_mon + 1);
    putDigits(text, 8, 2, fields.tm_mday);
    putDigits(text, 11, 2, fields.tm_hour);
    putDigits(text, 14, 2, fields.tm_min);
    putDigits(text, 17, 2, fields.tm_sec);
    return text;
}

}  // namespace toolkit
