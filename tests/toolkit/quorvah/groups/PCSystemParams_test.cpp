#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/GroupTester.h"
#include "tests/toolkit/quorvah/SmbiosTable.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(PCSystemParams, CombinesTheTableWithTheKernelsFiles) {
    const ScratchDir tree;
    writeSmbios(
        tree, {TableStructure(0, 0x1A, 0)
                   .text(0x04, "Firmware Maker")
                   .text(0x05, "F.12")
                   .text(0x08, "03/09/2021")
                   .set(0x14, 1, 5)
                   .set(0x15, 1, 17)
                   .set(0x16, 1, 1)
                   .set(0x17, 1, 9),
               TableStructure(1, 0x1B, 1).set(0x18, 1, 6),
               TableStructure(2, 0x0F, 2).text(0x05, "Riser").set(0x0D, 1, 3),
               TableStructure(2, 0x0F, 3)
                   .text(0x04, "Board Maker")
                   .text(0x05, "X11")
                   .text(0x06, "1.02")
                   .text(0x07, "B-77")
                   .text(0x08, "Base Board Asset Tag")
                   .set(0x0D, 1, 0x0A),
               TableStructure(11, 5, 4).set(4, 1, 2).text(4, "one").text(4, "Default string").text(4, "two"),
               TableStructure(24, 5, 5).set(4, 1, 0x04)});
    tree.write("sys/firmware/efi/efivars/SecureBoot-8be4df61-93ca-11d2-aa0d-00e098032b8c",
               std::string("\x06\0\0\0\x01", 5));
    tree.write("sys/class/power_supply/AC/type", "Mains\n");
    tree.write("sys/class/power_supply/AC/online", "0\n");
    tree.write("sys/class/power_supply/BAT0/type", "Battery\n");
    tree.write("sys/class/power_supply/BAT0/present", "1\n");
    const GroupData data = gatheredBelow(kPCSystemParams, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kPCSystemParams, data.instances().front(),
              {{"BIOSVersion", "F.12"},
               {"BIOSManufacturer", "Firmware Maker"},
               {"BIOSReleaseDate", "2021-03-09"},
               {"SystemBIOSMajorRelease", "5"},
               {"SystemBIOSMinorRelease", "17"},
               {"EmbeddedControllerRelease", "1.9"},
               {"BaseBoardManufacturer", "Board Maker"},
               {"BaseBoardProduct", "X11"},
               {"BaseBoardVersion", "1.02"},
               {"BaseBoardSerialNumber", "B-77"},
               {"WakeUpType", "Power Switch"},
               {"AdministratorPasswordStatus", "Enabled"},
               {"FirmwareType", "UEFI"},
               {"SecureBoot", "true"},
               {"OemStrings", "one;two"},
               {"PowerSource", "Battery"},
               {"BatteryPresent", "true"}});
}

TEST(PCSystemParams, NeedsNoTableForWhatTheKernelExports) {
    const ScratchDir tree;
    const std::string id = "sys/class/dmi/id/";
    tree.write(id + "bios_vendor", "Firmware Maker\n");
    tree.write(id + "bios_version", "1.2.3\n");
    tree.write(id + "bios_date", "12/31/99\n");
    tree.write(id + "bios_release", "1.2\n");
    tree.write(id + "ec_firmware_release", "3.4\n");
    tree.write(id + "board_vendor", "To Be Filled By O.E.M.\n");
    tree.write(id + "board_name", "X99\n");
    tree.write("sys/class/power_supply/hidpp_battery_0/type", "Battery\n");
    tree.write("sys/class/power_supply/hidpp_battery_0/scope", "Device\n");
    const GroupData data = gatheredBelow(kPCSystemParams, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kPCSystemParams, data.instances().front(),
              {{"BIOSVersion", "1.2.3"},
               {"BIOSManufacturer", "Firmware Maker"},
               {"BIOSReleaseDate", "1999-12-31"},
               {"SystemBIOSMajorRelease", "1"},
               {"SystemBIOSMinorRelease", "2"},
               {"EmbeddedControllerRelease", "3.4"},
               {"BaseBoardProduct", "X99"},
               {"BatteryPresent", "false"}});
}

TEST(PCSystemParams, AnInvalidDateOrVariableIsUnknown) {
    for (const char* const date :
         {"13/01/2020", "1/2/2020", "01/32/2020", "2020-01-02", "aa/bb/cccc", "01/02"}) {
        const ScratchDir tree;
        tree.write("sys/class/dmi/id/bios_date", date);
        tree.write("sys/class/dmi/id/bios_vendor", "x1");
        tree.write("sys/firmware/efi/efivars/SecureBoot-8be4df61-93ca-11d2-aa0d-00e098032b8c", "\x06");
        const GroupData data = gatheredBelow(kPCSystemParams, tree.path());
        ASSERT_EQ(1U, data.instances().size());
        EXPECT_EQ("", data.instances().front().get("BIOSReleaseDate")) << date;
        EXPECT_EQ("", data.instances().front().get("SecureBoot"));
    }
}

}  // namespace
}  // namespace toolkit::quorvah
