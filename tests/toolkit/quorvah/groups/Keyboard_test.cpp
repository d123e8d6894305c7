#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "tests/toolkit/quorvah/InputDevicesText.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

const Values kBuiltIn = {{"DeviceID", "input3"},         {"Name", "AT Translated Set 2 keyboard"},
                         {"NumberOfFunctionKeys", "15"}, {"Layout", "de"},
                         {"InterfaceType", "PS/2"},      {"VendorId", "0001"},
                         {"ProductId", "0001"},          {"Phys", "isa0060/serio0/input0"}};

TEST(Keyboard, ReportsDevicesWithAllLetters) {
    const ScratchDir tree;
    tree.write("proc/bus/input/devices", kInputDevices);
    tree.write("etc/default/keyboard", "XKBMODEL=\"pc105\"\nXKBLAYOUT=\"de\"\n");
    const GroupData data = gatheredBelow(kKeyboard, tree.path());
    ASSERT_EQ((std::vector<std::string>{"input3"}), keysOf(data)) << "a power button is no keyboard";
    expectAll(kKeyboard, data.instances().front(), kBuiltIn);
}

TEST(Keyboard, IsFoundInSysfsToo) {
    const ScratchDir tree;
    const std::string input = "sys/class/input/input3/";
    tree.write(input + "name", "AT Translated Set 2 keyboard\n");
    tree.write(input + "phys", "isa0060/serio0/input0\n");
    tree.write(input + "uniq", "\n");
    tree.write(input + "id/bustype", "0011\n");
    tree.write(input + "id/vendor", "0001\n");
    tree.write(input + "id/product", "0001\n");
    tree.write(input + "capabilities/key", "402000000 3803078f800d001 feffffdfffefffff fffffffffffffffe\n");
    tree.write("etc/vconsole.conf", "KEYMAP=de\n");
    const GroupData data = gatheredBelow(kKeyboard, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kKeyboard, data.instances().front(), kBuiltIn);
}

TEST(Keyboard, ReadsTheShorterWordsOfA32BitKernel) {
    const ScratchDir tree;
    tree.write("proc/cpuinfo", "processor : 0\nBogoMIPS : 38.40\nCPU architecture: 7\n");
    tree.write("bin/sh", std::string("\x7f"
                                     "ELF\x01\x01\x01\0\0\0\0\0\0\0\0\0\x02\0\x28\0",
                                     20));
    const std::string input = "sys/class/input/input0/";
    tree.write(input + "id/bustype", "0011\n");
    tree.write(input + "capabilities/key",
               "4 2000000 3803078 f800d001 feffffdf ffefffff ffffffff fffffffe\n");
    const GroupData data = gatheredBelow(kKeyboard, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    EXPECT_EQ("15", data.instances().front().get("NumberOfFunctionKeys"));
}

}  // namespace
}  // namespace toolkit::quorvah
