#include "toolkit/quorvah/sources/InputMaker.h"

#include "toolkit/quorvah/sources/BusAddress.h"

namespace toolkit::quorvah {

std::string inputMaker(const GatheringContext& context, const InputDevice& device) {
    const std::string_view bus = inputBusName(device.bus);
    if (bus != "USB" && bus != "Bluetooth") return {};
    const std::string_view usb = usbDeviceIn(device.sysfs);
    if (!usb.empty()) {
        const std::string path = "/sys/bus/usb/devices/" + std::string(usb) + "/manufacturer";
        std::string maker = context.firmwareText(context.root().readLine(path));
        if (!maker.empty()) return maker;
    }
    return std::string(context.usbNames().ids().vendor(device.vendor));
}

}  // namespace toolkit::quorvah
