// How sysfs writes what a USB device tells of itself, and how it is reported. What is not written so becomes
// empty.
#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvah {

// "5.16" of the binary coded "0516".
std::string usbRelease(std::string_view bcd);

// Bits per second of "480" or "1.5" megabits.
std::string usbSpeed(std::string_view megabits);

// Milliamperes of "100mA".
std::string usbPower(std::string_view power);

}  // namespace toolkit::quorvah
