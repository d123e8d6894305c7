#include "toolkit/quorvah/sources/Hypervisor.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/ScratchDir.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

constexpr const char* kVirtualCpu = "processor : 0\nvendor_id : GenuineIntel\nflags : fpu lm hypervisor\n";
constexpr const char* kRealCpu = "processor : 0\nvendor_id : GenuineIntel\nflags : fpu lm\n";

Hypervisor inTree(const ScratchDir& tree) {
    return findHypervisor(Root(tree.path().string()));
}

TEST(Hypervisor, IsIdentifiedByItsSignature) {
    const std::pair<const char*, const char*> cases[] = {
        {"KVMKVMKVM", "kvm"},    {"Microsoft Hv", "hyperv"},     {"VMwareVMware", "vmware"},
        {"XenVMMXenVMM", "xen"}, {"VBoxVBoxVBox", "virtualbox"}, {"TCGTCGTCGTCG", "qemu"},
        {"NeverSeenOne", ""}};
    for (const auto& [signature, type] : cases) {
        EXPECT_EQ(hypervisorOfSignature(signature).type, type) << signature;
        EXPECT_TRUE(hypervisorOfSignature(signature).present) << signature;
    }
}

TEST(Hypervisor, TheCpuOverridesFirmwareTexts) {
    const ScratchDir tree;
    tree.write("sys/class/dmi/id/sys_vendor", "Amazon EC2\n");
    tree.write("proc/cpuinfo", kRealCpu);
    EXPECT_FALSE(inTree(tree).present);
    tree.write("proc/cpuinfo", kVirtualCpu);
    EXPECT_EQ(inTree(tree).type, "kvm");
}

TEST(Hypervisor, FirmwareTextsApplyIfTheCpuHasNoFlag) {
    const ScratchDir tree;
    tree.write("sys/class/dmi/id/sys_vendor", "QEMU\n");
    tree.write("proc/cpuinfo", "processor : 0\nCPU implementer : 0x41\nCPU architecture: 8\n");
    EXPECT_EQ(inTree(tree).type, "kvm");
}

TEST(Hypervisor, TheEmulationOfQemuIsNotKvm) {
    const ScratchDir tree;
    tree.write("sys/class/dmi/id/sys_vendor", "QEMU\n");
    tree.write("proc/cpuinfo", kVirtualCpu);
    EXPECT_EQ(inTree(tree).type, "kvm");
    const std::string clocks = "sys/devices/system/clocksource/clocksource0/available_clocksource";
    tree.write(clocks, "tsc hpet acpi_pm\n");
    EXPECT_EQ(inTree(tree).type, "qemu");
    EXPECT_EQ(inTree(tree).vendor, "QEMU");
    tree.write(clocks, "tsc kvm-clock acpi_pm\n");
    EXPECT_EQ(inTree(tree).type, "kvm");
    tree.write("proc/cpuinfo",
               "processor : 0\nmodel name : QEMU TCG CPU version 2.5+\nflags : lm hypervisor\n");
    EXPECT_EQ(inTree(tree).type, "qemu");
}

TEST(Hypervisor, ABoardThatOnlyHypervisorsMakeIsAGuest) {
    const ScratchDir tree;
    tree.write("proc/cpuinfo", "processor : 0\nCPU implementer : 0x41\nCPU architecture: 8\n");
    tree.write("proc/device-tree/compatible", std::string("linux,dummy-virt\0", 17));
    EXPECT_TRUE(inTree(tree).present);
    EXPECT_EQ(inTree(tree).type, "");
    tree.write("proc/device-tree/fw-cfg@9020000/compatible", std::string("qemu,fw-cfg-mmio\0", 17));
    EXPECT_EQ(inTree(tree).type, "qemu");
    tree.write("proc/device-tree/compatible", std::string("raspberrypi,4-model-b\0brcm,bcm2711\0", 36));
    std::filesystem::remove_all(tree.path() / "proc/device-tree/fw-cfg@9020000");
    EXPECT_FALSE(inTree(tree).present);
}

TEST(Hypervisor, APowerGuestOfQemuIsNoPartition) {
    const ScratchDir tree;
    tree.write("proc/device-tree/ibm,partition-no", "1");
    EXPECT_EQ(inTree(tree).type, "lpar");
    tree.write("proc/device-tree/model", std::string("IBM pSeries (emulated by qemu)\0", 31));
    tree.write("proc/device-tree/compatible", std::string("qemu,pseries\0", 13));
    EXPECT_EQ(inTree(tree).type, "qemu");
    tree.write("proc/device-tree/hypervisor/compatible", "linux,kvm");
    EXPECT_EQ(inTree(tree).type, "kvm");
}

TEST(Hypervisor, AMachineThatIsRentedAsAWholeIsNoGuest) {
    const ScratchDir tree;
    tree.write("proc/cpuinfo", "processor : 0\nCPU implementer : 0x41\nCPU architecture: 8\n");
    tree.write("sys/class/dmi/id/sys_vendor", "Amazon EC2\n");
    tree.write("sys/class/dmi/id/product_name", "c7g.metal\n");
    EXPECT_FALSE(inTree(tree).present);
    tree.write("sys/class/dmi/id/product_name", "c7g.large\n");
    EXPECT_TRUE(inTree(tree).present);
}

TEST(Hypervisor, OnlyAGuestWithoutSmbiosMayBeFirecracker) {
    const ScratchDir tree;
    tree.write("proc/cpuinfo", kVirtualCpu);
    const auto table = tree.write("sys/firmware/acpi/tables/DSDT", std::string(10, 'x') + "FIRECK");
    EXPECT_EQ(inTree(tree).type, "firecracker");
    tree.write("sys/class/dmi/id/sys_vendor", "OpenStack Foundation\n");
    EXPECT_EQ(inTree(tree).type, "kvm");
}

TEST(Hypervisor, AnUnknownHypervisorIsPresent) {
    const ScratchDir tree;
    tree.write("proc/cpuinfo", kVirtualCpu);
    EXPECT_TRUE(inTree(tree).present);
    EXPECT_EQ(inTree(tree).type, "");
}

TEST(Hypervisor, DistinguishesXenGuestsFromTheControlDomain) {
    const ScratchDir tree;
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

TEST(Hypervisor, DistinguishesAnS390xPartitionFromAGuestInOne) {
    const ScratchDir tree;
    tree.write("proc/sysinfo", "Manufacturer: IBM\nLPAR Number:          28\n");
    EXPECT_EQ(inTree(tree).type, "lpar");
    tree.write("proc/sysinfo", "LPAR Number:          28\nVM00 Control Program: KVM/Linux\n");
    EXPECT_EQ(inTree(tree).type, "kvm");
    tree.write("proc/sysinfo", "Manufacturer: QEMU\nLPAR Number: 0\nVM00 Control Program: KVM/Linux\n");
    EXPECT_EQ(inTree(tree).type, "qemu");
}

TEST(Hypervisor, IdentifiesFirecrackerByItsAcpiTable) {
    const ScratchDir tree;
    tree.write("proc/cpuinfo", kVirtualCpu);
    tree.write("sys/firmware/acpi/tables/DSDT", std::string("DSDT\x53\x0f\0\0\x02\x77"
                                                            "FIRECKFCVMDSDT",
                                                            24));
    EXPECT_EQ(inTree(tree).type, "firecracker");
    EXPECT_EQ(inTree(tree).vendor, "KVM");
}

TEST(Hypervisor, IdentifiesAHyperVGuestByItsBus) {
    const ScratchDir tree;
    tree.write("proc/cpuinfo", kVirtualCpu);
    tree.write("sys/bus/vmbus/devices/vmbus_0/id", "1\n");
    EXPECT_EQ(inTree(tree).type, "hyperv");
}

TEST(Hypervisor, IsToldByADeviceThatOnlyItMakes) {
    const ScratchDir listed;
    listed.write("proc/cpuinfo", kRealCpu);
    listed.write("proc/bus/pci/devices", "0000\t80861237\t0\n0010\t80eebeef\t12\te0000008\tvboxvideo\n");
    EXPECT_EQ(inTree(listed).type, "virtualbox");
    listed.write("proc/bus/pci/devices", "0000\t80861237\t0\n0010\t1af41000\t12\n");
    EXPECT_FALSE(inTree(listed).present);
    const ScratchDir tree;
    tree.write("sys/bus/pci/devices/0000:00:0f.0/vendor", "0x15ad\n");
    tree.write("sys/bus/pci/devices/0000:00:0f.0/device", "0x0405\n");
    EXPECT_EQ(inTree(tree).type, "vmware");
}

TEST(Hypervisor, OfTheWindowsSubsystemIsToldByItsKernel) {
    const ScratchDir tree;
    tree.write("proc/version", "Linux version 4.19.104-microsoft-standard (oe-user@oe-host) #1 SMP 2020\n");
    tree.write("proc/cpuinfo", kVirtualCpu);
    EXPECT_EQ(inTree(tree).type, "hyperv");
    EXPECT_EQ(inTree(tree).vendor, "Microsoft");
    tree.write("proc/cpuinfo", "processor : 0\nCPU implementer : 0x51\nCPU architecture: 8\n");
    EXPECT_FALSE(inTree(tree).present);
    tree.write("proc/sys/kernel/osrelease", "5.15.153.1-microsoft-standard-WSL2\n");
    EXPECT_EQ(inTree(tree).type, "hyperv");
    tree.write("proc/cpuinfo", kRealCpu);
    tree.write("proc/sys/kernel/osrelease", "4.4.0-19041-Microsoft\n");
    EXPECT_FALSE(inTree(tree).present);
}

}  // namespace
}  // namespace toolkit::quorvah
