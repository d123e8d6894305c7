#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/GroupTester.h"
#include "tests/toolkit/quorvah/SmbiosTable.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(SMBIOS, ReportsEachStructureWithItsTextsAndBytes) {
    const ScratchDir tree;
    writeSmbios(tree, {TableStructure(11, 5, 0x0100).set(4, 1, 2).text(4, "first ").text(4, "second"),
                       TableStructure(221, 6, 0x0001).set(4, 2, 0xBEEF), TableStructure(11, 5, 0x0101)});
    const GroupData data = gatheredBelow(kSMBIOS, tree.path());
    EXPECT_EQ((std::vector<std::string>{"0001", "0100", "0101", "feff"}), keysOf(data));
    expectAll(kSMBIOS, instanceOf(data, "0100"),
              {{"Handle", "0100"},
               {"Type", "11"},
               {"Description", "OEM Strings"},
               {"Length", "5"},
               {"Strings", "first;second"},
               {"Data", "0b05000102"},
               {"SmbiosVersion", "3.6"},
               {"Number", "0"}});
    EXPECT_EQ("1", instanceOf(data, "0101").get("Number"));
    EXPECT_EQ("OEM-specific", instanceOf(data, "0001").get("Description"));
    EXPECT_EQ("dd060100efbe", instanceOf(data, "0001").get("Data"));
    EXPECT_EQ("End Of Table", instanceOf(data, "feff").get("Description"));
    EXPECT_EQ(GroupState::Complete, data.state());
}

TEST(SMBIOS, ATruncatedTableIsPartial) {
    const ScratchDir tree;
    const std::string table = TableStructure(11, 5, 1).text(4, "one").bytes();
    tree.write("sys/firmware/dmi/tables/DMI", table + table.substr(0, table.size() - 2));
    const GroupData data = gatheredBelow(kSMBIOS, tree.path());
    EXPECT_EQ(1U, data.instances().size());
    EXPECT_EQ(GroupState::Partial, data.state());
    EXPECT_EQ("smbios-broken", data.reason());
}

TEST(SMBIOS, ZerosBehindTheLastStructureAreNoDamage) {
    const ScratchDir tree;
    tree.write("sys/firmware/dmi/tables/DMI",
               TableStructure(11, 5, 1).text(4, "one").bytes() + std::string(16, '\0'));
    const GroupData data = gatheredBelow(kSMBIOS, tree.path());
    EXPECT_EQ(1U, data.instances().size());
    EXPECT_EQ(GroupState::Complete, data.state());
}

TEST(SMBIOS, DoesNotApplyToAMachineWithoutSuchFirmware) {
    const ScratchDir tree;
    tree.write("sys/kernel/notes", "");
    const GroupData data = gatheredBelow(kSMBIOS, tree.path());
    EXPECT_EQ(GroupState::NotApplicable, data.state());
    EXPECT_EQ("no-smbios", data.reason());
}

}  // namespace
}  // namespace toolkit::quorvah
