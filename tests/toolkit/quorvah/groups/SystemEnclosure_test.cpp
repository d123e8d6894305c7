#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/GroupTester.h"
#include "tests/toolkit/quorvah/SmbiosTable.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(SystemEnclosure, ReportsEveryChassisOfTheTable) {
    const ScratchDir tree;
    writeSmbios(tree, {TableStructure(3, 0x15 + 6 + 1, 0x0300)
                           .text(0x04, "Maker")
                           .set(0x05, 1, 0x80 | 0x17)
                           .text(0x06, "A00")
                           .text(0x07, "C-1234")
                           .text(0x08, "Default string")
                           .set(0x09, 1, 3)
                           .set(0x0A, 1, 4)
                           .set(0x0B, 1, 2)
                           .set(0x0C, 1, 4)
                           .set(0x11, 1, 2)
                           .set(0x12, 1, 3)
                           .set(0x13, 1, 2)
                           .set(0x14, 1, 3)
                           .text(0x15 + 6, "SKU-7"),
                       TableStructure(3, 0x0D, 0x0301).set(0x05, 1, 0x1C)});
    const GroupData data = gatheredBelow(kSystemEnclosure, tree.path());
    ASSERT_EQ((std::vector<std::string>{"Chassis 0", "Chassis 1"}), keysOf(data));
    expectAll(kSystemEnclosure, data.instances()[0],
              {{"Tag", "Chassis 0"},
               {"Manufacturer", "Maker"},
               {"ChassisPackageType", "Rack Mount Chassis"},
               {"Version", "A00"},
               {"SerialNumber", "C-1234"},
               {"SKUNumber", "SKU-7"},
               {"LockPresent", "true"},
               {"BootupState", "Safe"},
               {"PowerSupplyState", "Warning"},
               {"SecurityStatus", "External interface locked out"},
               {"Height", "2"},
               {"NumberOfPowerCords", "3"}});
    expectAll(kSystemEnclosure, data.instances()[1],
              {{"Tag", "Chassis 1"}, {"ChassisPackageType", "Blade"}, {"LockPresent", "false"}});
}

TEST(SystemEnclosure, ReportsWhatEveryUserMayReadWithoutTheTable) {
    const ScratchDir tree;
    const std::string id = "sys/devices/virtual/dmi/id/";
    tree.write(id + "chassis_vendor", "Maker\n");
    tree.write(id + "chassis_type", "10\n");
    tree.write(id + "chassis_version", "None\n");
    tree.write(id + "chassis_asset_tag", "T-5  \n");
    const GroupData data = gatheredBelow(kSystemEnclosure, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kSystemEnclosure, data.instances().front(),
              {{"Tag", "Chassis 0"},
               {"Manufacturer", "Maker"},
               {"ChassisPackageType", "Notebook"},
               {"AssetTag", "T-5"}});
}

TEST(SystemEnclosure, TakesTheKindOfABoardFromItsDeviceTree) {
    const ScratchDir tree;
    tree.write("proc/device-tree/chassis-type", std::string("laptop\0", 7));
    const GroupData data = gatheredBelow(kSystemEnclosure, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    EXPECT_EQ("Laptop", data.instances().front().get("ChassisPackageType"));
}

}  // namespace
}  // namespace toolkit::quorvah
