#pragma once

#include <string>

#include "toolkit/quorvah/sources/InputDevices.h"

namespace toolkit::quorvah {

// The maker of an input device: the text of its USB device, or the entry of its vendor id in usb.ids, which Bluetooth devices
// use too. Empty for other devices, whose ids are not those of makers.
std::string inputMaker(const GatheringContext& context, const InputDevice& device);

}  // namespace toolkit::quorvah
