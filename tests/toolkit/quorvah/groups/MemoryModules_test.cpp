#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/GroupTester.h"
#include "tests/toolkit/quorvah/SmbiosTable.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TableStructure module(unsigned handle, const std::string& locator) {
    return TableStructure(17, 0x5C, handle).text(0x10, locator);
}

TEST(MemoryModules, ReportsEveryFieldOfAModule) {
    const ScratchDir tree;
    writeSmbios(tree, {module(0x1100, "DIMM A1 ")
                           .text(0x11, "BANK 0")
                           .set(0x0C, 2, 0x7FFF)
                           .set(0x1C, 4, 32768)
                           .set(0x0E, 1, 0x09)
                           .set(0x12, 1, 0x22)
                           .set(0x13, 2, 0x2080)
                           .set(0x08, 2, 80)
                           .set(0x0A, 2, 64)
                           .set(0x15, 2, 0xFFFF)
                           .set(0x54, 4, 70000)
                           .set(0x20, 2, 4800)
                           .set(0x22, 2, 1100)
                           .set(0x24, 2, 1200)
                           .set(0x26, 2, 1150)
                           .set(0x1B, 1, 0x82)
                           .text(0x17, "80AD000080AD")
                           .text(0x1A, "HMCG88AEBRA115N")
                           .text(0x18, "80AD0123")
                           .text(0x19, "Not Specified")
                           .set(0x28, 1, 3)});
    const GroupData data = gatheredBelow(kMemoryModules, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    expectAll(kMemoryModules, data.instances().front(),
              {{"DeviceLocator", "DIMM A1"},
               {"BankLocator", "BANK 0"},
               {"Capacity", "34359738368"},
               {"FormFactor", "DIMM"},
               {"MemoryType", "DDR5"},
               {"TypeDetail", "Synchronous;Registered (Buffered)"},
               {"TotalWidth", "80"},
               {"DataWidth", "64"},
               {"Speed", "70000"},
               {"ConfiguredMemorySpeed", "4800"},
               {"MinimumVoltage", "1100"},
               {"MaximumVoltage", "1200"},
               {"ConfiguredVoltage", "1150"},
               {"Rank", "2"},
               {"Manufacturer", "SK hynix"},
               {"PartNumber", "HMCG88AEBRA115N"},
               {"SerialNumber", "80AD0123"},
               {"MemoryTechnology", "DRAM"},
               {"Handle", "1100"}});
}

TEST(MemoryModules, OmitsEmptySocketsButNotModulesOfUnknownSize) {
    const ScratchDir tree;
    writeSmbios(tree, {module(1, "empty"), module(2, "J2").set(0x0C, 2, 0xFFFF).set(0x08, 2, 0xFFFF)});
    const GroupData data = gatheredBelow(kMemoryModules, tree.path());
    ASSERT_EQ((std::vector<std::string>{"J2"}), keysOf(data));
    EXPECT_EQ("", data.instances().front().get("Capacity"));
    EXPECT_EQ("", data.instances().front().get("TotalWidth"));
}

TEST(MemoryModules, ReportsEmptySocketsOnRequest) {
    const ScratchDir tree;
    writeSmbios(tree,
                {module(1, "J1"), module(2, "J2").set(0x0C, 2, 0xFFFF), module(3, "J3").set(0x0C, 2, 64)});
    Options options;
    options.root = tree.path().string();
    options.emptySlots = true;
    const GroupData data = gathered(kMemoryModules, options);
    ASSERT_EQ((std::vector<std::string>{"J1", "J2", "J3"}), keysOf(data));
    EXPECT_EQ("0", data.instances()[0].get("Capacity"));
    EXPECT_EQ("", data.instances()[1].get("Capacity"));
    EXPECT_EQ("67108864", data.instances()[2].get("Capacity"));
}

TEST(MemoryModules, AShortStructureOfOldFirmwareHasTheFieldsOfItsTime) {
    const ScratchDir tree;
    writeSmbios(tree,
                {TableStructure(17, 0x15, 1).text(0x10, "J1").set(0x0C, 2, 0x8000 | 512).set(0x12, 1, 0x0F)});
    expectAll(kMemoryModules, gatheredBelow(kMemoryModules, tree.path()).instances().front(),
              {{"DeviceLocator", "J1"}, {"Capacity", "524288"}, {"MemoryType", "SDRAM"}, {"Handle", "0001"}});
}

TEST(MemoryModules, TakesTheMakerFromItsCodeIfThereIsNoText) {
    const ScratchDir tree;
    writeSmbios(tree, {module(1, "A").set(0x0C, 2, 1024).set(0x2C, 2, 0xCE80)});
    EXPECT_EQ("Samsung", gatheredBelow(kMemoryModules, tree.path()).instances().front().get("Manufacturer"));
}

TEST(MemoryModules, ReportsWhatTheMemoryControllersKnowWithoutTheTable) {
    const ScratchDir tree;
    const std::string controller = "sys/devices/system/edac/mc/mc0/";
    tree.write(controller + "dimm0/size", "16384\n");
    tree.write(controller + "dimm0/dimm_label", "CPU_SrcID#0_MC#0_Chan#0_DIMM#0\n");
    tree.write(controller + "dimm0/dimm_mem_type", "Registered-DDR4\n");
    tree.write(controller + "dimm1/size", "0\n");
    tree.write(controller + "dimm2/size", "8192\n");
    tree.write(controller + "dimm2/dimm_mem_type", "Low-Power-DDR3-RAM\n");
    const GroupData data = gatheredBelow(kMemoryModules, tree.path());
    EXPECT_EQ((std::vector<std::string>{"CPU_SrcID#0_MC#0_Chan#0_DIMM#0", "mc0/dimm2"}), keysOf(data));
    expectAll(kMemoryModules, instanceOf(data, "CPU_SrcID#0_MC#0_Chan#0_DIMM#0"),
              {{"DeviceLocator", "CPU_SrcID#0_MC#0_Chan#0_DIMM#0"},
               {"Capacity", "17179869184"},
               {"MemoryType", "DDR4"},
               {"TypeDetail", "Registered (Buffered)"}});
    EXPECT_EQ("LPDDR3", instanceOf(data, "mc0/dimm2").get("MemoryType"));
    EXPECT_EQ(GroupState::Complete, data.state()) << "nothing else on this machine tells more";
}

TEST(MemoryModules, ReportsACapturedServer) {
    const GroupData data = gatheredTree(kMemoryModules, "x86-server");
    EXPECT_EQ((std::vector<std::string>{"A1", "A2", "A4"}), keysOf(data)) << "the third socket is empty";
    EXPECT_EQ("Samsung", instanceOf(data, "A1").get("Manufacturer"));
    EXPECT_EQ("M393A2K43BB1-CTD", instanceOf(data, "A1").get("PartNumber"));
    EXPECT_EQ("34359738368", instanceOf(data, "A1").get("Capacity"));
}

TEST(MemoryModules, NamesEveryTypeAndReadsEverySize) {
    const struct {
        unsigned type;
        const char* name;
        unsigned size;
        const char* bytes;
    } cases[] = {{0x18, "DDR3", 4096, "4294967296"}, {0x1A, "DDR4", 0x8000 | 512, "524288"},
                 {0x1E, "LPDDR4", 0xFFFF, ""},       {0x20, "HBM", 0x7FFF, "68719476736"},
                 {0x21, "HBM2", 1, "1048576"},       {0x22, "DDR5", 0x7FFE, "34357641216"},
                 {0x23, "LPDDR5", 0x8001, "1024"},   {0x24, "HBM3", 0x7FFF, "68719476736"},
                 {0xFE, "", 0x7FFF, "68719476736"}};
    for (const auto& [type, name, size, bytes] : cases) {
        const ScratchDir tree;
        writeSmbios(tree, {module(0x1100, "A").set(0x12, 1, type).set(0x0C, 2, size).set(0x1C, 4, 65536)});
        const GroupData data = gatheredBelow(kMemoryModules, tree.path());
        EXPECT_EQ(instanceOf(data, "A").get("MemoryType"), name);
        EXPECT_EQ(instanceOf(data, "A").get("Capacity"), bytes) << name;
    }
}

TEST(InstalledMemory, ExcludesFlashMemoryAndArraysForSomethingElse) {
    const ScratchDir tree;
    writeSmbios(tree, {TableStructure(16, 0x0F, 0x1000).set(0x05, 1, 3),
                       TableStructure(16, 0x0F, 0x1001).set(0x05, 1, 5),
                       module(0x1100, "A").set(0x04, 2, 0x1000).set(0x0C, 2, 1024),
                       module(0x1101, "B").set(0x04, 2, 0x1001).set(0x0C, 2, 64),
                       module(0x1102, "ROM").set(0x04, 2, 0x1000).set(0x0C, 2, 4).set(0x12, 1, 0x09)});
    EXPECT_EQ(gatheredBelow(kMemory, tree.path()).instances().front().get("InstalledMemory"), "1048576");
}

}  // namespace
}  // namespace toolkit::quorvah
