#include "toolkit/quorvah/sources/Hypervisor.h"

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

#include <array>
#include <cstring>
#include <optional>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/Container.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/DeviceTree.h"
#include "toolkit/quorvah/sources/DmiId.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

struct Known {
    std::string_view mark;
    const char* type;
    const char* vendor;
};

constexpr Known kSignatures[] = {
    {"KVMKVMKVM", "kvm", "KVM"},
    {"Linux KVM Hv", "kvm", "KVM"},
    {"Microsoft Hv", "hyperv", "Microsoft"},
    {"VMwareVMware", "vmware", "VMware"},
    {"XenVMMXenVMM", "xen", "Xen"},
    {"VBoxVBoxVBox", "virtualbox", "Oracle"},
    {"TCGTCGTCGTCG", "qemu", "QEMU"},
    {"bhyve bhyve ", "", "bhyve"},
    {"prl hyperv  ", "", "Parallels"},
    {"ACRNACRNACRN", "", "ACRN"},
};

// Texts in the names of vendor, product and BIOS. The first match counts.
constexpr Known kFirmwareMarks[] = {
    {"VMware", "vmware", "VMware"},
    {"VirtualBox", "virtualbox", "Oracle"},
    {"innotek GmbH", "virtualbox", "Oracle"},
    {"Xen", "xen", "Xen"},
    {"Microsoft Corporation Virtual Machine", "hyperv", "Microsoft"},
    {"QEMU", "qemu", "QEMU"},
    {"KVM", "kvm", "KVM"},
    {"Amazon EC2", "kvm", "KVM"},
    {"Google Compute Engine", "kvm", "KVM"},
    {"OpenStack", "kvm", "KVM"},
    {"DigitalOcean", "kvm", "KVM"},
    {"Alibaba Cloud", "kvm", "KVM"},
    {"Hetzner vServer", "kvm", "KVM"},
    {"KubeVirt", "kvm", "KVM"},
    {"Apple Virtualization", "", "Apple"},
    {"BHYVE", "", "bhyve"},
    {"Parallels", "", "Parallels"},
};

// Maker and device of PCI devices that only these hypervisors make.
constexpr Known kPciDevices[] = {
    {"80eebeef", "virtualbox", "Oracle"}, {"80eecafe", "virtualbox", "Oracle"},
    {"15ad0405", "vmware", "VMware"},     {"15ad0740", "vmware", "VMware"},
    {"58530001", "xen", "Xen"},           {"14145353", "hyperv", "Microsoft"},
};

Hypervisor of(const Known& known) {
    return {true, known.type, known.vendor, {}, false};
}

#if defined(__x86_64__) || defined(__i386__)
constexpr unsigned kSignatureLeaf = 0x40000000;

std::string cpuSignature() {
    unsigned eax = 0;
    std::array<unsigned, 3> text{};
    __cpuid(kSignatureLeaf, eax, text[0], text[1], text[2]);
    std::array<char, sizeof text> bytes{};
    std::memcpy(bytes.data(), text.data(), sizeof text);
    return {bytes.data(), bytes.size()};
}

std::string hyperVVersion() {
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    __cpuid(kSignatureLeaf + 2, eax, ebx, ecx, edx);
    return std::to_string(ebx >> 16U) + "." + std::to_string(ebx & 0xFFFFU) + "." + std::to_string(eax);
}

Hypervisor fromCpu() {
    constexpr unsigned kHypervisorBit = 1U << 31U;
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) == 0 || (ecx & kHypervisorBit) == 0) return {};
    Hypervisor found = hypervisorOfSignature(cpuSignature());
    if (found.type == "hyperv") found.version = hyperVVersion();
    return found;
}
#else
Hypervisor fromCpu() {
    return {};
}
#endif

// What /proc/cpuinfo says about virtualization. Only x86 has a flag for it.
enum class CpuAnswer { Virtual, Real, None };

CpuAnswer askCpuInfo(const CpuInfo& info) {
    const std::string_view flags = info.value("flags");
    if (flags.empty()) return CpuAnswer::None;
    for (const std::string& flag : wordsOf(flags)) {
        if (flag == "hypervisor") return CpuAnswer::Virtual;
    }
    return CpuAnswer::Real;
}

// Whether a guest of QEMU is run by KVM and not by the emulation of a processor. The clock of KVM exists there only. Most
// KVM guests have it, also those that use another one. If the kernel lists no clocks, KVM is far more common.
bool isRunByKvm(const Root& root, std::string_view model) {
    if (model.find("TCG") != std::string_view::npos) return false;
    const std::string clocks =
        root.readLine("/sys/devices/system/clocksource/clocksource0/available_clocksource");
    const std::string current =
        root.readLine("/sys/devices/system/clocksource/clocksource0/current_clocksource");
    const std::string both = clocks + " " + current;
    return both == " " || both.find("kvm-clock") != std::string::npos;
}

Hypervisor ofQemu(bool kvm) {
    if (kvm) return {true, "kvm", "KVM", {}, false};
    return {true, "qemu", "QEMU", {}, false};
}

Hypervisor fromFirmware(const Root& root, const CpuInfo& info) {
    std::string texts;
    for (const char* const file : {"sys_vendor", "product_name", "bios_vendor"})
        texts += dmiLine(root, file) + " ";
    // Machines that Amazon rents as a whole.
    if (texts.find("Amazon EC2") != std::string::npos && texts.find(".metal") != std::string::npos) return {};
    for (const Known& known : kFirmwareMarks) {
        if (texts.find(known.mark) == std::string::npos) continue;
        const bool kvmAtAll = known.vendor == std::string_view("QEMU");
        return kvmAtAll ? ofQemu(isRunByKvm(root, info.value("model name"))) : of(known);
    }
    return {};
}

Hypervisor fromXen(const Root& root) {
    const std::string directory = "/sys/hypervisor/";
    if (root.readLine(directory + "type") != "xen") return {};
    // The control domain is not a guest.
    if (root.readLine("/proc/xen/capabilities").find("control_d") != std::string::npos) return {};
    Hypervisor found{true, "xen", "Xen", {}, root.readLine(directory + "guest_type") == "PV"};
    const std::string major = root.readLine(directory + "version/major");
    const std::string minor = root.readLine(directory + "version/minor");
    if (!major.empty()) found.version = major + "." + minor + root.readLine(directory + "version/extra");
    return found;
}

// An s390x machine always runs in a partition, which may contain another hypervisor. /proc/sysinfo then has a line
// such as
//     VM00 Control Program: z/VM    6.4.0
Hypervisor fromSysinfo(const Root& root) {
    const std::string sysinfo = root.read("/proc/sysinfo").value_or("");
    std::string_view program = valueForKey(sysinfo, "VM00 Control Program");
    // The emulation tells the same as KVM, but makes up the machine, too.
    if (program.starts_with("KVM") && valueForKey(sysinfo, "Manufacturer") == "QEMU") return ofQemu(false);
    if (program.starts_with("KVM")) return {true, "kvm", "KVM", {}, false};
    if (!program.empty()) {
        nextWord(program);
        return {true, "zvm", "IBM", std::string(trimmed(program)), false};
    }
    if (valueForKey(sysinfo, "LPAR Number").empty()) return {};
    return {true, "lpar", "IBM", {}, false};
}

bool hasText(const Root& root, const char* file, std::string_view text) {
    return deviceTreeBytes(root, file).find(text) != std::string::npos;
}

Hypervisor fromDeviceTree(const Root& root) {
    const std::string compatible = deviceTreeBytes(root, "hypervisor/compatible");
    if (compatible.starts_with("linux,kvm")) return {true, "kvm", "KVM", {}, false};
    if (compatible.starts_with("xen")) return {true, "xen", "Xen", {}, false};
    if (compatible.starts_with("vmware")) return {true, "vmware", "VMware", {}, false};
    // Boards that only hypervisors make. QEMU passes its configuration to the firmware by a device of its own.
    const bool qemu = hasText(root, "model", "qemu") || hasText(root, "compatible", "qemu") ||
                      hasText(root, "fw-cfg@9020000/compatible", "qemu") ||
                      root.exists("/sys/firmware/qemu_fw_cfg");
    if (qemu && root.exists(deviceTree(root) + "compatible")) return ofQemu(false);
    for (const char* const board : {"linux,dummy-virt", "linux,dummy-loongson3", "riscv-virtio"}) {
        if (hasText(root, "compatible", board)) return {true, {}, {}, {}, false};
    }
    if (root.exists(deviceTree(root) + "ibm,partition-no")) return {true, "lpar", "IBM", {}, true};
    return {};
}

// Firecracker is identified by the maker of the ACPI table DSDT, which only root may read. It has no SMBIOS, so that other
// guests of KVM are told apart without the table.
enum class Answer { Yes, No, Denied };

Answer askForFirecracker(const Root& root) {
    if (!dmiLine(root, "sys_vendor").empty()) return Answer::No;
    constexpr std::size_t kMaker = 10;
    const int denials = root.denials();
    const std::string table = root.read("/sys/firmware/acpi/tables/DSDT").value_or("");
    const bool denied = root.denials() > denials;
    root.forgetDenials(denials);
    if (denied) return Answer::Denied;
    const bool found = table.size() > kMaker && std::string_view(table).substr(kMaker).starts_with("FIRECK");
    return found ? Answer::Yes : Answer::No;
}

// The second generation of the Windows Subsystem for Linux is a virtual machine without firmware. Its early kernels were
// not named after it.
bool isVirtualWsl(const Root& root, CpuAnswer answer) {
    const std::string release = kernelRelease(root);
    if (!isReleaseOfWsl(release)) return false;
    return answer == CpuAnswer::Virtual || release.find("WSL2") != std::string::npos;
}

Hypervisor ofPciDevice(std::string_view id) {
    for (const Known& known : kPciDevices) {
        if (id == known.mark) return of(known);
    }
    return {};
}

// From the list of the devices, such as "0010\t80eebeef\t12\t...", or in a tree without it from their directories.
Hypervisor fromPci(const Root& root) {
    constexpr std::size_t kMaxList = std::size_t{16} << 20;
    const std::optional<std::string> list = root.read("/proc/bus/pci/devices", kMaxList);
    std::string_view rest = list ? std::string_view(*list) : std::string_view();
    for (std::string_view line; nextLine(rest, line);) {
        nextWord(line);
        if (Hypervisor found = ofPciDevice(nextWord(line)); found.present) return found;
    }
    if (list || root.live()) return {};
    const std::string directory = "/sys/bus/pci/devices/";
    for (const std::string& address : root.list(directory)) {
        const std::string vendor = root.readLine(directory + address + "/vendor");
        const std::string device = root.readLine(directory + address + "/device");
        if (vendor.size() != 6 || device.size() != 6) continue;
        if (Hypervisor found = ofPciDevice(vendor.substr(2) + device.substr(2)); found.present) return found;
    }
    return {};
}

Hypervisor firstFound(const Root& root) {
    if (root.live()) {
        Hypervisor found = fromCpu();
        if (!found.vendor.empty() && found.type != "xen") return found;
    }
    for (Hypervisor (*const find)(const Root&) : {fromXen, fromSysinfo, fromDeviceTree, fromPci}) {
        Hypervisor found = find(root);
        if (found.present) return found;
    }
    // The CPU is more reliable than firmware texts.
    const CpuInfo info(root.read("/proc/cpuinfo").value_or(""));
    const CpuAnswer answer = askCpuInfo(info);
    if (answer == CpuAnswer::Real) return {};
    if (!root.list("/sys/bus/vmbus/devices").empty()) return {true, "hyperv", "Microsoft", {}, false};
    if (isVirtualWsl(root, answer)) return {true, "hyperv", "Microsoft", {}, false};
    Hypervisor found = fromFirmware(root, info);
    found.present = found.present || answer == CpuAnswer::Virtual;
    return found;
}

}  // namespace

Hypervisor hypervisorOfSignature(std::string_view signature) {
    for (const Known& known : kSignatures) {
        if (signature.starts_with(known.mark)) return of(known);
    }
    return {true, {}, {}, {}, false};
}

Hypervisor findHypervisor(const Root& root) {
    Hypervisor found = firstFound(root);
    if (!found.present || (found.type != "kvm" && !found.type.empty())) return found;
    switch (askForFirecracker(root)) {
        case Answer::Yes:
            found.type = "firecracker";
            found.vendor = "KVM";
            break;
        case Answer::Denied:
            found.typeDenied = true;
            break;
        case Answer::No:
            break;
    }
    return found;
}

}  // namespace toolkit::quorvah
