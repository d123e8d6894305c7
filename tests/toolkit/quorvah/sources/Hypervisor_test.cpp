#include "toolkit/quorvah/sources/Hypervisor.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Expectations.h"
#include "toolkit/quorvah/groups/GroupTable.h"

using toolkit::Root;
using toolkit::quorvah::expectOnly;
using toolkit::quorvah::findHypervisor;
using toolkit::quorvah::gatherTree;
using toolkit::quorvah::Hypervisor;
using toolkit::quorvah::hypervisorOfSignature;
using toolkit::quorvah::kVirtualMachineGuest;

namespace {

constexpr const char* kVirtualCpu = "processor : 0\nvendor_id : GenuineIntel\nflags : fpu lm hypervisor\n";
constexpr const char* kRealCpu = "processor : 0\nvendor_id : GenuineIntel\nflags : fpu lm\n";

Hypervisor inTree(const zavtest::ScratchDir& tree) {
    return findHypervisor(Root(tree.path().string()));
}

}  // namespace

TEST(VirtualMachineGuestGroup, TellsAGuestByItsCpuAndFirmware) {
    expectOnly(kVirtualMachineGuest, "kvm-guest",
               {{"VirtualSystemIdentifier", "6d3e8a52-43ab-4d83-9b54-6b3f3c2a1d00"},
                {"VirtualSystemType", "kvm"},
                {"HypervisorVendor", "KVM"},
                {"VirtualizationMode", "full"},
                {"ClockSource", "kvm-clock"},
                {"CloudPlatform", "openstack"}});
}

TEST(VirtualMachineGuestGroup, TellsAContainerAndItsId) {
    expectOnly(
        kVirtualMachineGuest, "container",
        {{"VirtualSystemIdentifier", "0123456789abcdef0123456789abcdef0123456789abcdef0123456789abcdef"},
         {"VirtualSystemType", "container"},
         {"ContainerType", "docker"}});
}

TEST(VirtualMachineGuestGroup, TellsAPartitionedMachine) {
    expectOnly(kVirtualMachineGuest, "s390x",
               {{"VirtualSystemType", "zvm"},
                {"HypervisorVendor", "IBM"},
                {"HypervisorVersion", "6.4.0"},
                {"VirtualizationMode", "full"}});
    expectOnly(kVirtualMachineGuest, "ppc64le",
               {{"VirtualSystemType", "lpar"}, {"HypervisorVendor", "IBM"}, {"VirtualizationMode", "para"}});
}

TEST(VirtualMachineGuestGroup, HasNoInstanceOnARealMachine) {
    for (const char* const machine : {"x86-server", "arm64-board", "hybrid", "contradictory"}) {
        EXPECT_TRUE(gatherTree(kVirtualMachineGuest, machine).instances().empty()) << machine;
    }
}

TEST(Hypervisor, IsKnownByItsSignature) {
    const std::pair<const char*, const char*> cases[] = {
        {"KVMKVMKVM", "kvm"},    {"Microsoft Hv", "hyperv"},     {"VMwareVMware", "vmware"},
        {"XenVMMXenVMM", "xen"}, {"VBoxVBoxVBox", "virtualbox"}, {"NeverSeenOne", ""}};
    for (const auto& [signature, type] : cases) {
        EXPECT_EQ(hypervisorOfSignature(signature).type, type) << signature;
        EXPECT_TRUE(hypervisorOfSignature(signature).present) << signature;
    }
}

TEST(Hypervisor, FirmwareTextsAreNoProofAgainstTheCpu) {
    const zavtest::ScratchDir tree;
    tree.write("sys/class/dmi/id/sys_vendor", "Amazon EC2\n");
    tree.write("proc/cpuinfo", kRealCpu);
    EXPECT_FALSE(inTree(tree).present);
    tree.write("proc/cpuinfo", kVirtualCpu);
    EXPECT_EQ(inTree(tree).type, "kvm");
}

TEST(Hypervisor, FirmwareTextsCountWhereTheCpuHasNoWordForIt) {
    const zavtest::ScratchDir tree;
    tree.write("sys/class/dmi/id/sys_vendor", "QEMU\n");
    tree.write("proc/cpuinfo", "processor : 0\nCPU implementer : 0x41\nCPU architecture: 8\n");
    EXPECT_EQ(inTree(tree).type, "kvm");
}

TEST(Hypervisor, OneThatNobodyNamesIsStillThere) {
    const zavtest::ScratchDir tree;
    tree.write("proc/cpuinfo", kVirtualCpu);
    EXPECT_TRUE(inTree(tree).present);
    EXPECT_EQ(inTree(tree).type, "");
}

TEST(Hypervisor, TellsTheGuestsOfXenFromItsControlDomain) {
    const zavtest::ScratchDir tree;
    tree.write("sys/hypervisor/type", "xen\n");
    tree.write("sys/hypervisor/guest_type", "PV\n");
    tree.write("sys/hypervisor/version/major", "4\n");
    tree.write("sys/hypervisor/version/minor", "17\n");
    tree.write("sys/hypervisor/version/extra", ".1\n");
    EXPECT_EQ(inTree(tree).type, "xen");
    EXPECT_EQ(inTree(tree).version, "4.17.1");
    EXPECT_TRUE(inTree(tree).paravirtual);
    tree.write("proc/xen/capabilities", "control_d\n");
    EXPECT_FALSE(inTree(tree).present);
}

TEST(Hypervisor, TellsAPlainPartitionOfAnS390xFromAGuestInOne) {
    const zavtest::ScratchDir tree;
    tree.write("proc/sysinfo", "Manufacturer: IBM\nLPAR Number:          28\n");
    EXPECT_EQ(inTree(tree).type, "lpar");
    tree.write("proc/sysinfo", "LPAR Number:          28\nVM00 Control Program: KVM/Linux\n");
    EXPECT_EQ(inTree(tree).type, "kvm");
}

TEST(Hypervisor, TellsAMicroMachineByTheMakerOfItsFirmwareTable) {
    const zavtest::ScratchDir tree;
    tree.write("proc/cpuinfo", kVirtualCpu);
    tree.write("sys/firmware/acpi/tables/DSDT", std::string("DSDT\x53\x0f\0\0\x02\x77"
                                                            "FIRECKFCVMDSDT",
                                                            24));
    EXPECT_EQ(inTree(tree).type, "firecracker");
    EXPECT_EQ(inTree(tree).vendor, "KVM");
}

TEST(Hypervisor, TellsAHyperVGuestByItsBus) {
    const zavtest::ScratchDir tree;
    tree.write("proc/cpuinfo", kVirtualCpu);
    tree.write("sys/bus/vmbus/devices/vmbus_0/id", "1\n");
    EXPECT_EQ(inTree(tree).type, "hyperv");
}

TEST(Container, IsNamedByItsManagersMarks) {
    const zavtest::ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_EQ(toolkit::quorvah::containerType(root), "");
    tree.write(".dockerenv", "");
    EXPECT_EQ(toolkit::quorvah::containerType(root), "docker");
    tree.write("run/.containerenv", "");
    EXPECT_EQ(toolkit::quorvah::containerType(root), "podman");
    tree.write("run/systemd/container", "lxc\n");
    EXPECT_EQ(toolkit::quorvah::containerType(root), "lxc");
}

TEST(Container, HasNoIdWithoutAWholeOneAmongTheMounts) {
    const zavtest::ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_EQ(toolkit::quorvah::containerId(root), "");
    tree.write("proc/self/mountinfo",
               "1 0 8:1 /containers/ / rw - ext4 /dev/sda1 rw\n1 0 8:1 /containers/abc / rw\n");
    EXPECT_EQ(toolkit::quorvah::containerId(root), "");
}
