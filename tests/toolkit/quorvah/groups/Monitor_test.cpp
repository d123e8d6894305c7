#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/EdidBlock.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(Monitor, ReportsConnectedDisplays) {
    const ScratchDir tree;
    tree.write("sys/class/drm/card0/dev", "226:0\n");
    tree.write("sys/class/drm/card0-DP-1/status", "disconnected\n");
    tree.write("sys/class/drm/card0-DP-1/edid", "");
    tree.write("sys/class/drm/card0-HDMI-A-1/status", "connected\n");
    tree.write("sys/class/drm/card0-HDMI-A-1/edid", edidBlock());
    tree.write("sys/class/drm/card0-VGA-1/status", "connected\n");
    tree.write("sys/class/drm/card0-VGA-1/edid", edidBlock().substr(0, 127) + "?");
    const GroupData data = gatheredBelow(kMonitor, tree.path());
    ASSERT_EQ((std::vector<std::string>{"card0-HDMI-A-1", "card0-VGA-1"}), keysOf(data));
    Values expected = {{"DeviceID", "card0-HDMI-A-1"},
                       {"Name", "DELL U2412M"},
                       {"Manufacturer", "Dell"},
                       {"SerialNumber", "YMYH12AB"},
                       {"HorizontalResolution", "1920"},
                       {"VerticalResolution", "1200"},
                       {"DisplayType", "Digital"},
                       {"ManufacturerId", "DEL"},
                       {"ProductCode", "a0c4"},
                       {"WeekOfManufacture", "23"},
                       {"YearOfManufacture", "2012"},
                       {"ImageWidth", "518"},
                       {"ImageHeight", "324"},
                       {"Diagonal", "611"},
                       {"EdidVersion", "1.4"}};
    const std::string edid = data.instances().front().get("Edid");
    EXPECT_EQ(256U, edid.size());
    EXPECT_TRUE(edid.starts_with("00ffffffffffff0010acc4a0"));
    expected.emplace_back("Edid", edid);
    expectAll(kMonitor, data.instances().front(), expected);
    expectAll(kMonitor, data.instances().back(), {{"DeviceID", "card0-VGA-1"}});
}

TEST(Monitor, AMachineWithoutADisplayDriverCannotTell) {
    const ScratchDir tree;
    tree.write("sys/class/net/lo/mtu", "65536\n");
    const GroupData data = gatheredBelow(kMonitor, tree.path());
    EXPECT_EQ(GroupState::NotApplicable, data.state());
    EXPECT_EQ("no-driver", data.reason());
}

}  // namespace
}  // namespace toolkit::quorvah
