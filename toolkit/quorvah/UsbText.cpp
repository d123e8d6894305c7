#include "toolkit/quorvah/UsbText.h"

#include <charconv>
#include <cstdint>

namespace toolkit::quorvah {
namespace {

bool readNumber(std::string_view text, std::uint64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

}  // namespace

std::string usbRelease(std::string_view bcd) {
    if (bcd.size() != 4 || bcd.find_first_not_of("0123456789abcdef") != std::string_view::npos) return {};
    const std::string_view major = bcd.substr(bcd[0] == '0' ? 1 : 0, bcd[0] == '0' ? 1 : 2);
    return std::string(major) + "." + std::string(bcd.substr(2));
}

std::string usbSpeed(std::string_view megabits) {
    if (megabits == "1.5") return "1500000";
    std::uint64_t number = 0;
    if (!readNumber(megabits, number) || number == 0 || number > 1'000'000) return {};
    return std::to_string(number * 1'000'000);
}

std::string usbPower(std::string_view power) {
    if (!power.ends_with("mA")) return {};
    std::uint64_t number = 0;
    return readNumber(power.substr(0, power.size() - 2), number) ? std::to_string(number) : std::string();
}

}  // namespace toolkit::quorvah
