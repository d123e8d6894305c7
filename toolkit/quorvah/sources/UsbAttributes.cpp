#include "toolkit/quorvah/sources/UsbAttributes.h"

#include "toolkit/machine/text/Checked.h"

namespace toolkit::quorvah {

std::string usbRelease(std::string_view bcd) {
    if (bcd.size() != 4 || bcd.find_first_not_of("0123456789abcdef") != std::string_view::npos) return {};
    const std::string_view major = bcd.substr(bcd[0] == '0' ? 1 : 0, bcd[0] == '0' ? 1 : 2);
    return std::string(major) + "." + std::string(bcd.substr(2));
}

std::string usbSpeed(std::string_view megabits) {
    if (megabits == "1.5") return "1500000";
    const Count number = readCount(megabits);
    if (number.value_or(0) == 0 || *number > 1'000'000) return {};
    return std::to_string(*number * 1'000'000);
}

std::string usbPower(std::string_view power) {
    if (!power.ends_with("mA")) return {};
    const Count number = readCount(power.substr(0, power.size() - 2));
    return number ? std::to_string(*number) : std::string();
}

}  // namespace toolkit::quorvah
