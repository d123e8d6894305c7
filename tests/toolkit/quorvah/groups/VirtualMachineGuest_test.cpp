#include <gtest/gtest.h>

#include <map>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

TEST(VirtualMachineGuest, ReportsAGuestByItsCpuAndFirmware) {
    expectOnly(kVirtualMachineGuest, "kvm-guest",
               {{"VirtualSystemIdentifier", "6d3e8a52-43ab-4d83-9b54-6b3f3c2a1d00"},
                {"VirtualSystemType", "kvm"},
                {"HypervisorVendor", "KVM"},
                {"VirtualizationMode", "full"},
                {"ClockSource", "kvm-clock"},
                {"CloudPlatform", "openstack"}});
}

TEST(VirtualMachineGuest, ReportsAContainerAndItsId) {
    expectOnly(
        kVirtualMachineGuest, "container",
        {{"VirtualSystemIdentifier", "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef"},
         {"VirtualSystemType", "container"},
         {"ContainerType", "docker"}});
}

TEST(VirtualMachineGuest, ReportsAPartitionedMachine) {
    expectOnly(kVirtualMachineGuest, "s390x",
               {{"VirtualSystemType", "zvm"},
                {"HypervisorVendor", "IBM"},
                {"HypervisorVersion", "6.4.0"},
                {"VirtualizationMode", "full"}});
    expectOnly(kVirtualMachineGuest, "ppc64le",
               {{"VirtualSystemType", "lpar"}, {"HypervisorVendor", "IBM"}, {"VirtualizationMode", "para"}});
}

TEST(VirtualMachineGuest, HasNoInstanceOnARealMachine) {
    for (const char* const machine : {"x86-server", "arm64-board", "hybrid", "contradictory"}) {
        EXPECT_TRUE(gatheredTree(kVirtualMachineGuest, machine).instances().empty()) << machine;
    }
}

TEST(VirtualMachineGuestLive, MatchesLscpu) {
    const std::map<std::string, std::string> fields = lscpuFields();
    const GroupData data = gatheredLive(kVirtualMachineGuest);
    ASSERT_EQ(data.instances().empty(), !fields.contains("Hypervisor vendor"));
    if (data.instances().empty()) return;
    EXPECT_EQ(data.instances().front().get("HypervisorVendor"), fields.at("Hypervisor vendor"));
    EXPECT_EQ(data.instances().front().get("VirtualizationMode"), fields.at("Virtualization type"));
}

}  // namespace
}  // namespace toolkit::quorvah
