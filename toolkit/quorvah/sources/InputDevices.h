#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// A set of event codes, such as the keys that a device has.
class EventCodes {
  public:
    // A bitmap as the kernel prints it: hexadecimal words, the highest first. Empty if the text has another form.
    EventCodes(std::string_view text, unsigned bitsPerWord);
    EventCodes() = default;

    bool has(unsigned code) const;
    // How many codes of this range there are, including both ends.
    unsigned count(unsigned first, unsigned last) const;

  private:
    std::vector<std::uint64_t> words_;  // the lowest first
    unsigned bits_ = 64;
};

// An input device as the kernel describes it.
struct InputDevice {
    std::string id;  // "input5"
    std::string name;
    std::string bus;  // four hexadecimal digits, as are the next two
    std::string vendor;
    std::string product;
    std::string phys;     // where it is attached
    std::string unique;   // its serial number, or its address
    std::string sysfs;    // its directory in /sys, "/devices/..."
    std::string handler;  // "event3"; empty if it has none
    EventCodes properties;
    EventCodes events;
    EventCodes keys;
    EventCodes relative;
    EventCodes absolute;
};

// The devices in /proc/bus/input/devices, or else in /sys/class/input.
std::vector<InputDevice> readInputDevices(const Root& root);

// Parses /proc/bus/input/devices.
std::vector<InputDevice> parseInputDevices(std::string_view text, unsigned bitsPerWord);

// "USB", "PS/2", "Bluetooth" and so on; empty if the number is not known.
std::string_view inputBusName(std::string_view bus);

}  // namespace toolkit::quorvah
