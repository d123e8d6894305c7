#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(Video, ReportsAPciController) {
    const ScratchDir tree;
    const std::string pci = "sys/devices/pci0000:00/0000:00:02.0/";
    tree.write(pci + "class", "0x030000\n");
    tree.write(pci + "vendor", "0x8086\n");
    tree.write(pci + "device", "0x5917\n");
    tree.write(pci + "subsystem_vendor", "0x17aa\n");
    tree.write(pci + "subsystem_device", "0x225d\n");
    tree.write(pci + "boot_vga", "1\n");
    tree.write(pci + "mem_info_vram_total", "536870912\n");
    tree.write(pci + "drm/card1/dev", "226:1\n");
    tree.write(pci + "drm/card1/card1-eDP-1/status", "connected\n");
    tree.write(pci + "graphics/fb0/virtual_size", "1920,1080\n");
    tree.link(pci + "driver", "../../../bus/pci/drivers/i915");
    tree.link("sys/bus/pci/devices/0000:00:02.0", "../../../devices/pci0000:00/0000:00:02.0");
    tree.link("sys/class/drm/card1", "../../devices/pci0000:00/0000:00:02.0/drm/card1");
    tree.link("sys/class/drm/card1-eDP-1", "../../devices/pci0000:00/0000:00:02.0/drm/card1/card1-eDP-1");
    tree.link("sys/class/drm/renderD128", "../../devices/pci0000:00/0000:00:02.0/drm/renderD128");
    tree.link("sys/class/graphics/fb0", "../../devices/pci0000:00/0000:00:02.0/graphics/fb0");
    tree.write("sys/module/i915/version", "1.6.0\n");
    tree.write("sys/bus/pci/devices/0000:00:1f.0/class", "0x060100\n");
    tree.write("ids/pci.ids", "8086  Intel Corporation\n\t5917  UHD Graphics 620 [Kaby Lake]\n");
    Options options;
    options.root = tree.path().string();
    options.ids = (tree.path() / "ids").string();
    const GroupData data = gathered(kVideo, options);
    ASSERT_EQ((std::vector<std::string>{"0000:00:02.0"}), keysOf(data));
    expectAll(kVideo, data.instances().front(),
              {{"DeviceID", "0000:00:02.0"},
               {"Name", "UHD Graphics 620 [Kaby Lake]"},
               {"Manufacturer", "Intel Corporation"},
               {"VideoProcessor", "UHD Graphics 620"},
               {"VideoMemory", "536870912"},
               {"CurrentHorizontalResolution", "1920"},
               {"CurrentVerticalResolution", "1080"},
               {"VendorId", "8086"},
               {"ProductId", "5917"},
               {"SubsystemVendorId", "17aa"},
               {"SubsystemId", "225d"},
               {"DriverName", "i915"},
               {"DriverVersion", "1.6.0"},
               {"DrmName", "card1"},
               {"Connectors", "eDP-1"},
               {"BootVga", "true"}});
}

TEST(Video, ReportsADisplayOfABoardAndOmitsOnesMadeBySoftware) {
    const ScratchDir tree;
    tree.write("sys/devices/platform/soc/fe004000.gpu/drm/card0/dev", "226:0\n");
    tree.link("sys/devices/platform/soc/fe004000.gpu/drm/card0/device", "../../../fe004000.gpu");
    tree.link("sys/devices/platform/soc/fe004000.gpu/driver", "../../../../bus/platform/drivers/vc4-drm");
    tree.link("sys/class/drm/card0", "../../devices/platform/soc/fe004000.gpu/drm/card0");
    tree.write("sys/class/drm/card1/dev", "226:1\n");
    const GroupData data = gatheredBelow(kVideo, tree.path());
    ASSERT_EQ((std::vector<std::string>{"fe004000.gpu"}), keysOf(data));
    expectAll(kVideo, data.instances().front(),
              {{"DeviceID", "fe004000.gpu"}, {"DriverName", "vc4-drm"}, {"DrmName", "card0"}});
}

}  // namespace
}  // namespace toolkit::quorvah
