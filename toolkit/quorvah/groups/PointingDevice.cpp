#include <linux/input-event-codes.h>
#include <linux/input.h>
#include <sys/ioctl.h>

#include <string>
#include <string_view>

#include "schema/groups/PointingDevice.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/InputDevices.h"
#include "toolkit/quorvah/sources/InputMaker.h"

namespace toolkit::quorvah {

namespace {

std::string_view absoluteType(const InputDevice& device) {
    const bool direct = device.properties.has(INPUT_PROP_DIRECT);
    const bool stylus = device.keys.has(BTN_TOOL_PEN) || device.keys.has(BTN_STYLUS);
    if (stylus) return "Tablet";
    if (device.keys.has(BTN_TOUCH) || device.absolute.has(ABS_MT_POSITION_X)) {
        const bool finger = device.keys.has(BTN_TOOL_FINGER) || device.properties.has(INPUT_PROP_POINTER);
        return finger && !direct ? "Touchpad" : "TouchScreen";
    }
    if (device.keys.count(BTN_JOYSTICK, BTN_THUMBR) > 0) return "Joystick";
    // The pointer of a virtual machine follows that of its viewer.
    return device.keys.has(BTN_LEFT) ? "Tablet" : "";
}

// Empty for a device that does not point.
std::string_view pointingType(const InputDevice& device) {
    if (device.properties.has(INPUT_PROP_ACCELEROMETER)) return {};
    const bool absolute = device.absolute.has(ABS_X) && device.absolute.has(ABS_Y);
    if (absolute || device.absolute.has(ABS_MT_POSITION_X)) return absoluteType(device);
    const bool relative = device.relative.has(REL_X) && device.relative.has(REL_Y);
    if (!relative || !device.keys.has(BTN_LEFT)) return {};
    return device.properties.has(INPUT_PROP_POINTING_STICK) ? "TrackPoint" : "Mouse";
}

unsigned buttonsOf(const InputDevice& device, std::string_view type) {
    if (type == "Joystick") return device.keys.count(BTN_JOYSTICK, BTN_THUMBR);
    const unsigned buttons = device.keys.count(BTN_MOUSE, BTN_TASK);
    return type == "Tablet" ? buttons + device.keys.count(BTN_STYLUS, BTN_STYLUS2) : buttons;
}

// In units per mm. Only the device itself knows it.
unsigned resolutionOf(const Root& root, const InputDevice& device) {
    if (!root.live() || device.handler.empty() || !device.absolute.has(ABS_X)) return 0;
    const kest::Descriptor file = root.open("/dev/input/" + device.handler);
    input_absinfo axis{};
    if (!file.isOpen() || ::ioctl(file.number(), EVIOCGABS(ABS_X), &axis) < 0 || axis.resolution < 0)
        return 0;
    return static_cast<unsigned>(axis.resolution);
}

constexpr const char* kSources[] = {"/proc/bus/input/devices", "/sys/class"};

void gather(GatheringContext& context, GroupData& data) {
    for (const InputDevice& device : readInputDevices(context.root())) {
        const std::string_view type = pointingType(device);
        if (type.empty()) continue;
        Instance& pointer = data.add(device.id);
        pointer.set("Name", context.firmwareText(device.name));
        pointer.set("Manufacturer", inputMaker(context, device));
        pointer.set("PointingType", type);
        pointer.set("NumberOfButtons", buttonsOf(device, type));
        const unsigned resolution = resolutionOf(context.root(), device);
        if (resolution != 0) pointer.set("Resolution", resolution);
        pointer.set("InterfaceType", inputBusName(device.bus));
        pointer.set("VendorId", device.vendor);
        pointer.set("ProductId", device.product);
        pointer.set("Phys", device.phys);
        pointer.set("SerialNumber", context.firmwareText(device.unique));
    }
}

}  // namespace

constexpr Group kPointingDevice{.displayName = "Pointing Device",
                                .xmlName = "PointingDevice",
                                .fields = schema::kPointingDevice.fields,
                                .gather = gather,
                                .sources = kSources};

}  // namespace toolkit::quorvah
