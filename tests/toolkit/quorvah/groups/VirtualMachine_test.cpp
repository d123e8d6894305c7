#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/quorvah/sources/GuestConfig.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

constexpr char kDomain[] =
    "<!-- written by the manager -->\n<domain type='kvm'>\n<name>web</name>\n"
    "<uuid>1b2c3d4e-0000-4000-8000-000000000001</uuid>\n<memory unit='GiB'>4</memory>\n"
    "<currentMemory unit='KiB'>1</currentMemory>\n<vcpu placement='static'>3</vcpu>\n<devices>\n"
    "<disk type='file' device='disk'><driver name='qemu'/><source file='/var/lib/libvirt/images/web &amp; "
    "db.qcow2'/></disk>\n"
    "<disk type='file' device='cdrom'/>\n"
    "<interface type='network'><mac address='52:54:00:00:00:01'/></interface>\n</devices>\n</domain>\n";

TEST(VirtualMachine, ReportsTheDomainsOfLibvirt) {
    const ScratchDir tree;
    tree.write("etc/libvirt/qemu/web.xml", kDomain);
    tree.link("etc/libvirt/qemu/autostart/web.xml", "/etc/libvirt/qemu/web.xml");
    tree.write("etc/libvirt/qemu/networks/default.xml", "<network/>");
    tree.write("run/libvirt/qemu/web.xml", "<domstatus state='running'/>");
    tree.write("run/libvirt/qemu/temp.xml",
               "<domstatus state='running'><domain type='qemu'><name>temp</name></domain></domstatus>");
    const GroupData data = gatheredBelow(kVirtualMachine, tree.path());
    ASSERT_EQ(2U, data.instances().size());
    expectAll(kVirtualMachine, instanceOf(data, "1b2c3d4e-0000-4000-8000-000000000001"),
              {{"VirtualSystemIdentifier", "1b2c3d4e-0000-4000-8000-000000000001"},
               {"ElementName", "web"},
               {"VirtualSystemType", "kvm"},
               {"EnabledState", "Enabled"},
               {"NumberOfProcessors", "3"},
               {"MemorySize", "4294967296"},
               {"AutomaticStartupAction", "Always"},
               {"Manager", "libvirt"},
               {"ConfigFile", "/etc/libvirt/qemu/web.xml"},
               {"MacAddresses", "52:54:00:00:00:01"},
               {"Disks", "/var/lib/libvirt/images/web & db.qcow2"}});
    EXPECT_EQ("temp", instanceOf(data, "").get("ElementName"));
}

TEST(VirtualMachine, ReportsProxmoxAndLxc) {
    const ScratchDir tree;
    tree.write("etc/pve/qemu-server/100.conf",
               "name: db\nmemory: 2048\ncores: 2\nsockets: 2\nonboot: 1\n"
               "net0: virtio=BC:24:11:00:00:01,bridge=vmbr0\nscsi0: local:vm-100-disk-0,size=32G\n"
               "ide2: local:iso/x.iso,media=cdrom\nscsihw: virtio-scsi-pci\n"
               "smbios1: uuid=1b2c3d4e-0000-4000-8000-000000000002\n[snap]\nname: old\nmemory: 1\n");
    tree.write("var/lib/lxc/box/config",
               "lxc.uts.name = box\nlxc.start.auto = 0\nlxc.rootfs.path = dir:/var/lib/lxc/box/rootfs\n"
               "lxc.cgroup2.memory.max = 512M\nlxc.cgroup2.cpuset.cpus = 0-1,4\nlxc.net.0.hwaddr = "
               "00:16:3e:00:00:01\n");
    const GroupData data = gatheredBelow(kVirtualMachine, tree.path());
    ASSERT_EQ(2U, data.instances().size());
    expectAll(kVirtualMachine, instanceOf(data, "1b2c3d4e-0000-4000-8000-000000000002"),
              {{"VirtualSystemIdentifier", "1b2c3d4e-0000-4000-8000-000000000002"},
               {"ElementName", "db"},
               {"VirtualSystemType", "kvm"},
               {"NumberOfProcessors", "4"},
               {"MemorySize", "2147483648"},
               {"AutomaticStartupAction", "Always"},
               {"Manager", "proxmox"},
               {"ConfigFile", "/etc/pve/qemu-server/100.conf"},
               {"MacAddresses", "BC:24:11:00:00:01"},
               {"Disks", "local:vm-100-disk-0"}});
    expectAll(kVirtualMachine, instanceOf(data, ""),
              {{"ElementName", "box"},
               {"VirtualSystemType", "lxc"},
               {"NumberOfProcessors", "3"},
               {"MemorySize", "536870912"},
               {"AutomaticStartupAction", "Never"},
               {"Manager", "lxc"},
               {"ConfigFile", "/var/lib/lxc/box/config"},
               {"MacAddresses", "00:16:3e:00:00:01"},
               {"Disks", "dir:/var/lib/lxc/box/rootfs"}});
}

TEST(VirtualMachine, ADamagedFileIsReported) {
    const ScratchDir tree;
    tree.write("etc/libvirt/qemu/bad.xml", "<domain type='kvm'><name>x");
    tree.write("etc/libvirt/qemu/good.xml", kDomain);
    const GroupData data = gatheredBelow(kVirtualMachine, tree.path());
    EXPECT_EQ(1U, data.instances().size());
    EXPECT_EQ("guest-broken", data.reason());
}

TEST(GuestConfig, RefusesDocumentsThatExpandOrAreTooDeep) {
    EXPECT_FALSE(parseDomain("<!DOCTYPE d [<!ENTITY a 'x'>]><domain type='kvm'><name>&a;</name></domain>"));
    std::string deep = "<domain>";
    for (int i = 0; i < 100; ++i) deep += "<a>";
    EXPECT_FALSE(parseDomain(deep));
    EXPECT_FALSE(parseDomain("<domain><name>" + std::string(100000, 'x') + "</name></domain>"));
    EXPECT_FALSE(parseDomain("<network/>"));
    EXPECT_FALSE(parseDomain(""));
}

TEST(GuestConfig, OverflowingSizesAreUnknown) {
    EXPECT_EQ(std::nullopt, parseDomain("<domain><memory unit='TiB'>99999999999</memory></domain>")->memory);
    EXPECT_EQ(std::nullopt, parseDomain("<domain><memory unit='furlong'>1</memory></domain>")->memory);
    EXPECT_EQ(std::nullopt, parseProxmox("cores: 9223372036854775807\nsockets: 2\n").processors);
}

}  // namespace
}  // namespace toolkit::quorvah
