#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "tests/toolkit/quorvah/InputDevicesText.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(PointingDevice, TellsMiceFromPadsAndTablets) {
    const ScratchDir tree;
    tree.write("proc/bus/input/devices", kInputDevices);
    tree.write("sys/bus/usb/devices/1-3/manufacturer", "Logitech\n");
    const GroupData data = gatheredBelow(kPointingDevice, tree.path());
    ASSERT_EQ((std::vector<std::string>{"input11", "input13", "input14"}), keysOf(data));
    expectAll(kPointingDevice, data.instances()[0],
              {{"DeviceID", "input11"},
               {"Name", "Logitech USB Optical Mouse"},
               {"Manufacturer", "Logitech"},
               {"PointingType", "Mouse"},
               {"NumberOfButtons", "8"},
               {"InterfaceType", "USB"},
               {"VendorId", "046d"},
               {"ProductId", "c077"},
               {"Phys", "usb-0000:00:14.0-3/input0"},
               {"SerialNumber", "M-42"}});
    EXPECT_EQ("Touchpad", data.instances()[1].get("PointingType"));
    EXPECT_EQ("1", data.instances()[1].get("NumberOfButtons"));
    EXPECT_EQ("I2C", data.instances()[1].get("InterfaceType"));
    EXPECT_EQ("", data.instances()[1].get("Manufacturer")) << "an id of I2C names no maker of USB devices";
    EXPECT_EQ("Tablet", data.instances()[2].get("PointingType"));
    EXPECT_EQ("3", data.instances()[2].get("NumberOfButtons"));
}

TEST(PointingDevice, TellsTouchScreensTrackPointsAndJoysticks) {
    const struct {
        const char* properties;
        const char* keys;
        const char* relative;
        const char* absolute;
        const char* type;
    } cases[] = {
        {"2", "400 0 0 0 0 0", "0", "260800000000003", "TouchScreen"},
        {"21", "70000 0 0 0 0", "3", "0", "TrackPoint"},
        {"0", "ffff00000000 0 0 0 0", "0", "3003f", "Joystick"},
        {"0", "1c03 0 0 0 0 0", "0", "1000003", "Tablet"},
        {"40", "0", "0", "7", nullptr},
    };
    for (const auto& [properties, keys, relative, absolute, type] : cases) {
        const ScratchDir tree;
        const std::string input = "sys/class/input/input0/";
        tree.write("sys/class/input/input9/capabilities/key", "fffffffffffffffe\n");
        tree.write(input + "properties", properties);
        tree.write(input + "capabilities/key", keys);
        tree.write(input + "capabilities/rel", relative);
        tree.write(input + "capabilities/abs", absolute);
        const GroupData data = gatheredBelow(kPointingDevice, tree.path());
        ASSERT_EQ(type == nullptr ? 0U : 1U, data.instances().size()) << keys;
        for (const Instance& device : data.instances()) EXPECT_EQ(type, device.get("PointingType")) << keys;
    }
}

}  // namespace
}  // namespace toolkit::quorvah
