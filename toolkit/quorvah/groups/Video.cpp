#include <map>
#include <string>
#include <vector>

#include "schema/groups/Video.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/BusAddress.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

const std::string kPci = "/sys/bus/pci/devices/";
const std::string kCards = "/sys/class/drm/";
const std::string kFrameBuffers = "/sys/class/graphics/";

// A graphics card as the kernel's drivers show it.
struct Card {
    std::string name;    // "card0"
    std::string device;  // the bus address, or the name of a device on another bus
    std::vector<std::string> connectors;
};

// The bus address of the device behind an entry of a class.
std::string deviceOf(const Root& root, const std::string& entry) {
    std::string address(pciAddressIn(root.readLink(entry)));
    if (address.empty()) address = pciAddressIn(root.readLink(entry + "/device"));
    return address.empty() ? root.linkName(entry + "/device") : address;
}

std::vector<Card> readCards(const Root& root) {
    std::vector<Card> cards;
    for (const std::string& name : root.list(kCards)) {
        if (!name.starts_with("card")) continue;
        const std::size_t dash = name.find('-');
        if (dash == std::string::npos) {
            cards.push_back({name, deviceOf(root, kCards + name), {}});
        } else if (!cards.empty() && cards.back().name == name.substr(0, dash)) {
            cards.back().connectors.push_back(name.substr(dash + 1));
        }
    }
    return cards;
}

// The four digits after "0x".
std::string idOf(const Root& root, const std::string& path) {
    const std::string line = root.readLine(path);
    const bool valid = line.size() == 6 && line.starts_with("0x") &&
                       line.find_first_not_of("0123456789abcdef", 2) == std::string::npos;
    return valid ? line.substr(2) : std::string();
}

void setNames(const Root& root, DeviceIdsFile& ids, const std::string& address, Instance& video) {
    const std::string vendor = video.get("VendorId");
    std::string name(ids.device(vendor, video.get("ProductId")));
    // "GP104 [GeForce GTX 1070]": the chip, then the products with it.
    video.set("VideoProcessor", name.substr(0, name.find(" [")));
    const std::string information =
        root.read("/proc/driver/nvidia/gpus/" + address + "/information").value_or("");
    const std::string_view model = valueForKey(information, "Model");
    video.set("Name", model.empty() ? std::string_view(name) : model);
    video.set("Manufacturer", ids.vendor(vendor));
}

void setIds(const Root& root, const std::string& path, Instance& video) {
    video.set("VendorId", idOf(root, path + "vendor"));
    video.set("ProductId", idOf(root, path + "device"));
    const std::string vendor = idOf(root, path + "subsystem_vendor");
    const std::string device = idOf(root, path + "subsystem_device");
    if (vendor == "0000" && device == "0000") return;
    video.set("SubsystemVendorId", vendor);
    video.set("SubsystemId", device);
}

void setDriver(const Root& root, const std::string& path, Instance& video) {
    const std::string driver = root.linkName(path + "driver");
    video.set("DriverName", driver);
    if (!driver.empty()) video.set("DriverVersion", root.readLine("/sys/module/" + driver + "/version"));
    const std::string boot = root.readLine(path + "boot_vga");
    if (boot == "0" || boot == "1") video.set("BootVga", boot == "1");
    // Drivers of amdgpu and radeon state it. The size of an address range is not the size of the memory.
    video.set("VideoMemory", root.readCount(path + "mem_info_vram_total"));
}

void setCard(const Card& card, Instance& video) {
    video.set("DrmName", card.name);
    video.set("Connectors", card.connectors);
}

// The resolution of the text console, "1024,768".
void setResolution(const Root& root, const std::string& frameBuffer, Instance& video) {
    const std::string line = root.readLine(kFrameBuffers + frameBuffer + "/virtual_size");
    std::string_view height = line;
    const Count width = readCount(takeField(height, ','));
    if (width.value_or(0) == 0 || readCount(height).value_or(0) == 0) return;
    video.set("CurrentHorizontalResolution", width);
    video.set("CurrentVerticalResolution", readCount(height));
}

constexpr const char* kSources[] = {"/sys/bus", "/sys/class"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    std::map<std::string, Instance*> found;  // by bus address
    for (const std::string& address : root.list(kPci)) {
        const std::string path = kPci + address + "/";
        if (!readPciAddress(address) || !root.readLine(path + "class").starts_with("0x03")) continue;
        Instance& video = data.add(address);
        found[address] = &video;
        setIds(root, path, video);
        setNames(root, context.pciNames().ids(), address, video);
        setDriver(root, path, video);
    }
    for (const Card& card : readCards(root)) {
        if (card.device.empty()) continue;  // made by software, such as vkms
        Instance*& video = found[card.device];
        if (video == nullptr) {
            video = &data.add(card.device);
            setDriver(root, kCards + card.name + "/device/", *video);
        }
        setCard(card, *video);
    }
    for (const std::string& name : root.list(kFrameBuffers)) {
        if (!name.starts_with("fb") || name == "fbcon") continue;
        const auto video = found.find(deviceOf(root, kFrameBuffers + name));
        if (video != found.end()) setResolution(root, name, *video->second);
    }
}

}  // namespace

constexpr Group kVideo{.displayName = "Video",
                       .xmlName = "Video",
                       .fields = schema::kVideo.fields,
                       .gather = gather,
                       .sources = kSources};

}  // namespace toolkit::quorvah
