#include "toolkit/quorvah/sources/GuestConfig.h"

#include <algorithm>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/CpuList.h"
#include "toolkit/quorvah/sources/XmlWalk.h"

namespace toolkit::quorvah {

namespace {

constexpr std::uint64_t kKib = 1024;
constexpr std::size_t kMaxDevices = 1000;

// The units of libvirt, whose default for memory is KiB.
Count unitOf(std::string_view unit) {
    if (unit.empty() || unit == "KiB" || unit == "k") return kKib;
    if (unit == "b" || unit == "bytes") return 1;
    if (unit == "KB") return 1000;
    if (unit == "MB") return 1'000'000;
    if (unit == "M" || unit == "MiB") return kKib * kKib;
    if (unit == "GB") return 1'000'000'000;
    if (unit == "G" || unit == "GiB") return kKib * kKib * kKib;
    if (unit == "T" || unit == "TiB") return kKib * kKib * kKib * kKib;
    return std::nullopt;
}

// "8G" and so on, "max" without a limit.
Count sizeOf(std::string_view text) {
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    std::string_view unit = text.substr(digits);
    if (unit.empty()) return readCount(text);
    if (unit.ends_with('B')) unit.remove_suffix(1);
    return product(readCount(text.substr(0, digits)), unitOf(unit == "K" ? "KiB" : unit));
}

void addDevice(std::vector<std::string>& devices, std::string_view device) {
    if (!device.empty() && devices.size() < kMaxDevices) devices.emplace_back(device);
}

// Takes the path that a domain has within the document of its state.
std::string_view inDomain(std::string_view path) {
    constexpr std::string_view kState = "domstatus/";
    if (path.starts_with(kState)) path.remove_prefix(kState.size());
    return path;
}

// "virtio=BC:24:11:00:00:01,bridge=vmbr0": the hardware address is the value of the model.
void addProxmoxAdapter(std::string_view value, GuestConfig& guest) {
    while (!value.empty()) {
        std::string_view option = takeField(value, ',');
        takeField(option, '=');
        if (option.size() == 17 && option[2] == ':') addDevice(guest.macAddresses, option);
    }
}

// The value of one option of "uuid=...,manufacturer=...".
std::string_view optionOf(std::string_view options, std::string_view name) {
    while (!options.empty()) {
        std::string_view option = takeField(options, ',');
        if (takeField(option, '=') == name) return option;
    }
    return {};
}

// Whether the key is "scsi0" and so on.
bool isNumbered(std::string_view key, std::string_view name) {
    return key.starts_with(name) && readCount(key.substr(name.size())).has_value();
}

}  // namespace

std::optional<GuestConfig> parseDomain(std::string_view document) {
    GuestConfig guest;
    bool isDomain = false;
    Count unit;
    XmlHandler handler;
    handler.begin = [&](const std::string& whole, const XmlAttributes& attributes) {
        const std::string_view path = inDomain(whole);
        if (path == "domain") {
            isDomain = true;
            guest.type = attributes.value("type");
        } else if (path == "domain/memory") {
            unit = unitOf(attributes.value("unit"));
        } else if (path == "domain/devices/interface/mac") {
            addDevice(guest.macAddresses, attributes.value("address"));
        } else if (path == "domain/devices/disk/source" || path == "domain/devices/filesystem/source") {
            for (const char* const name : {"file", "dev", "name", "volume", "dir"}) {
                const std::string_view source = attributes.value(name);
                if (source.empty()) continue;
                addDevice(guest.disks, source);
                break;
            }
        }
    };
    handler.end = [&](const std::string& whole, const std::string& text) {
        const std::string_view path = inDomain(whole);
        if (path == "domain/uuid") guest.uuid = trimmed(text);
        if (path == "domain/name") guest.name = trimmed(text);
        if (path == "domain/vcpu") guest.processors = readCount(trimmed(text));
        if (path == "domain/memory") guest.memory = product(readCount(trimmed(text)), unit);
    };
    const bool whole = walkXml(document, handler);
    if (!whole || !isDomain) return std::nullopt;
    return guest;
}

GuestConfig parseProxmox(std::string_view text) {
    GuestConfig guest;
    guest.type = "kvm";
    guest.starts = false;
    Count cores = 1;
    Count sockets = 1;
    for (std::string_view line; nextLine(text, line);) {
        line = trimmed(line);
        if (line.starts_with('[')) break;  // snapshots follow
        if (line.empty() || line.front() == '#') continue;
        const std::string_view key = takeField(line, ':');
        const std::string_view value = trimmed(line);
        if (key == "name") guest.name = value;
        if (key == "memory") guest.memory = product(readLeadingCount(value), kKib * kKib);
        if (key == "cores") cores = readCount(value);
        if (key == "sockets") sockets = readCount(value);
        if (key == "onboot") guest.starts = value == "1";
        if (key == "kvm" && value == "0") guest.type = "qemu";
        if (key == "smbios1") guest.uuid = optionOf(value, "uuid");
        if (isNumbered(key, "net")) addProxmoxAdapter(value, guest);
        for (const char* const bus : {"scsi", "virtio", "sata", "ide"}) {
            const bool medium = optionOf(value, "media") == "cdrom";
            if (isNumbered(key, bus) && !medium) addDevice(guest.disks, value.substr(0, value.find(',')));
        }
    }
    guest.processors = product(cores, sockets);
    return guest;
}

GuestConfig parseLxc(std::string_view text) {
    GuestConfig guest;
    guest.type = "lxc";
    guest.starts = false;
    for (std::string_view line; nextLine(text, line);) {
        line = trimmed(line);
        if (line.empty() || line.front() == '#') continue;
        const std::string_view key = trimmed(takeField(line, '='));
        const std::string_view value = trimmed(line);
        if (key == "lxc.uts.name" || key == "lxc.utsname") guest.name = value;
        if (key == "lxc.start.auto") guest.starts = value == "1";
        if (key == "lxc.rootfs.path" || key == "lxc.rootfs") addDevice(guest.disks, value);
        if (key == "lxc.cgroup2.memory.max" || key == "lxc.cgroup.memory.limit_in_bytes")
            guest.memory = sizeOf(value);
        if (key == "lxc.cgroup2.cpuset.cpus" || key == "lxc.cgroup.cpuset.cpus") {
            const std::vector<int> cpus = readCpuList(value);
            if (!cpus.empty()) guest.processors = cpus.size();
        }
        if (key.starts_with("lxc.net") && key.ends_with(".hwaddr")) addDevice(guest.macAddresses, value);
    }
    return guest;
}

}  // namespace toolkit::quorvah
