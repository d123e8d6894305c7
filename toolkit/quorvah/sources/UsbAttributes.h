// Converts attributes of USB devices in sysfs to reported values. Returns an empty text if an attribute has another
// form.
#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvah {

// "5.16" for the binary coded decimal "0516".
std::string usbRelease(std::string_view bcd);

// Bits per second, for "480" or "1.5" Mbit/s.
std::string usbSpeed(std::string_view megabits);

// Milliamperes, for "100mA".
std::string usbPower(std::string_view power);

}  // namespace toolkit::quorvah
