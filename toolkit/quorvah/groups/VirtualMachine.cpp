#include <optional>
#include <string>
#include <vector>

#include "schema/groups/VirtualMachine.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/GuestConfig.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMaxConfig = std::size_t{4} << 20;

Instance& addGuest(const GuestConfig& guest, const char* manager, const std::string& file, GroupData& data) {
    Instance& machine = data.add(guest.uuid);
    machine.set("ElementName", guest.name);
    machine.set("VirtualSystemType", guest.type);
    machine.set("NumberOfProcessors", guest.processors);
    machine.set("MemorySize", guest.memory);
    if (guest.starts) machine.set("AutomaticStartupAction", *guest.starts ? "Always" : "Never");
    machine.set("Manager", manager);
    machine.set("ConfigFile", file);
    machine.set("MacAddresses", guest.macAddresses);
    machine.set("Disks", guest.disks);
    return machine;
}

void addDomains(const Root& root, const std::string& driver, GroupData& data) {
    const std::string directory = "/etc/libvirt/" + driver + "/";
    const std::string autostart = directory + "autostart/";
    const std::string running = "/run/libvirt/" + driver + "/";
    const bool knowsRunning = root.isDirectory(running);
    for (const std::string& name : root.list(directory)) {
        if (!name.ends_with(".xml")) continue;
        std::optional<std::string> text = root.read(directory + name, kMaxConfig);
        if (!text) continue;
        std::optional<GuestConfig> guest = parseDomain(*text);
        if (!guest) {
            data.partial("guest-broken");
            continue;
        }
        guest->starts = !root.readLink(autostart + name).empty();
        Instance& machine = addGuest(*guest, "libvirt", directory + name, data);
        if (knowsRunning) machine.set("EnabledState", root.exists(running + name) ? "Enabled" : "Disabled");
    }
}

// Machines of the manager that exist only while they run.
void addTransientDomains(const Root& root, const std::string& driver, GroupData& data) {
    const std::string directory = "/run/libvirt/" + driver + "/";
    const std::string persistent = "/etc/libvirt/" + driver + "/";
    for (const std::string& name : root.list(directory)) {
        if (!name.ends_with(".xml") || root.exists(persistent + name)) continue;
        const std::optional<std::string> text = root.read(directory + name, kMaxConfig);
        const std::optional<GuestConfig> guest = text ? parseDomain(*text) : std::nullopt;
        if (guest) addGuest(*guest, "libvirt", directory + name, data).set("EnabledState", "Enabled");
    }
}

void addProxmox(const Root& root, GroupData& data) {
    const std::string directory = "/etc/pve/qemu-server/";
    for (const std::string& name : root.list(directory)) {
        if (!name.ends_with(".conf")) continue;
        const std::optional<std::string> text = root.read(directory + name, kMaxConfig);
        if (!text) continue;
        Instance& machine = addGuest(parseProxmox(*text), "proxmox", directory + name, data);
        const std::string number = name.substr(0, name.size() - 5);
        if (root.isDirectory("/run/qemu-server"))
            machine.set("EnabledState",
                        root.exists("/run/qemu-server/" + number + ".pid") ? "Enabled" : "Disabled");
    }
}

void addLxc(const Root& root, GroupData& data) {
    const std::string directory = "/var/lib/lxc/";
    for (const std::string& name : root.list(directory)) {
        const std::string file = directory + name + "/config";
        const std::optional<std::string> text = root.read(file, kMaxConfig);
        if (!text) continue;
        GuestConfig guest = parseLxc(*text);
        if (guest.name.empty()) guest.name = name;
        addGuest(guest, "lxc", file, data);
    }
}

constexpr const char* kSources[] = {"/etc"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    for (const char* const driver : {"qemu", "lxc", "libxl"}) {
        addDomains(root, driver, data);
        addTransientDomains(root, driver, data);
    }
    addProxmox(root, data);
    addLxc(root, data);
}

}  // namespace

constexpr Group kVirtualMachine{.displayName = "VirtualMachine",
                                .xmlName = "VirtualMachine",
                                .fields = schema::kVirtualMachine.fields,
                                .gather = gather,
                                .sources = kSources};

}  // namespace toolkit::quorvah
