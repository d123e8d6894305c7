#include "toolkit/quorvah/sources/CpuModel.h"

#include <algorithm>
#include <cstdint>
#include <initializer_list>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/ArmCpuIds.h"
#include "toolkit/quorvah/sources/JedecMakers.h"

namespace toolkit::quorvah {

namespace {

// Removes an optional prefix "0x".
std::string_view withoutPrefix(std::string_view hex) {
    if (hex.starts_with("0x")) hex.remove_prefix(2);
    return hex;
}

// "r3p1" for variant 0x3 and revision 1, as in the documents of the makers.
std::string armStepping(std::string_view variant, std::string_view revision) {
    if (variant.empty() || revision.empty()) return {};
    return "r" + std::string(withoutPrefix(variant)) + "p" + std::string(revision);
}

CpuModel armModel(const CpuInfo& info, int cpu) {
    const std::string_view implementer = withoutPrefix(info.value(cpu, "CPU implementer"));
    const std::string_view part = withoutPrefix(info.value(cpu, "CPU part"));
    CpuModel model;
    model.name = armPart(implementer, part);
    if (model.name.empty()) model.name = info.value(cpu, "model name");
    if (model.name.empty()) model.name = info.value(cpu, "Processor");
    model.manufacturer = armImplementer(implementer);
    model.family = info.value(cpu, "CPU architecture");
    model.model = part;
    model.stepping = armStepping(info.value(cpu, "CPU variant"), info.value(cpu, "CPU revision"));
    return model;
}

// The maker of a PowerPC processor, by the upper half of its version register. Others were made by several.
std::string_view powerMaker(std::string_view name, std::string_view version) {
    for (const std::string_view ibm : {"POWER", "PPC970", "Cell", "RS64"}) {
        if (name.starts_with(ibm)) return "IBM";
    }
    if (name.starts_with("PA6T")) return "PA Semi";
    // 7400, 7410, 745x, 744x and the cores e500, e5500, e6500
    const bool motorola = version == "000c" || version == "800c" || version.starts_with("80");
    return motorola ? "Freescale" : std::string_view();
}

// Such as "POWER9 (architected), altivec supported" and "2.2 (pvr 004e 1202)".
CpuModel powerModel(const CpuInfo& info, int cpu) {
    CpuModel model;
    std::string_view name = info.value(cpu, "cpu");
    model.name = trimmed(takeField(name, ','));
    std::string_view revision = info.value(cpu, "revision");
    model.stepping = nextWord(revision);
    if (nextWord(revision) == "(pvr") model.model = nextWord(revision);
    model.manufacturer = powerMaker(model.name, model.model);
    return model;
}

// From the common lines, such as
//     processor 0: version = FF,  identification = 0133E8,  machine = 2964
CpuModel s390Model(const CpuInfo& info, int cpu) {
    CpuModel model;
    model.manufacturer = "IBM";
    model.name = info.value(cpu, "vendor_id");
    std::string_view line = info.value(cpu, "processor " + std::to_string(cpu));
    while (!line.empty()) {
        std::string_view value = takeField(line, ',');
        const std::string_view key = trimmed(takeField(value, '='));
        if (key == "machine") model.model = trimmed(value);
        if (key == "version") model.stepping = trimmed(value);
    }
    if (!model.model.empty()) model.name += " " + model.model;
    return model;
}

// The maker's name for the number in "mvendorid": above the low 7 bits the page of JEDEC's list, in them the number on the
// page. The number itself for others.
std::string riscvMaker(std::string_view vendor) {
    const std::string_view digits = withoutPrefix(vendor);
    const Count number = readCount(digits, 16);
    if (number == 0) return {};
    if (!number || *number > UINT32_MAX) return std::string(digits);
    const std::string_view name =
        jedecMaker(static_cast<unsigned>(*number >> 7), static_cast<unsigned>(*number & 0x7F));
    return std::string(name.empty() ? digits : name);
}

CpuModel riscvModel(const CpuInfo& info, int cpu) {
    CpuModel model;
    model.name = info.value(cpu, "uarch");
    model.manufacturer = riscvMaker(info.value(cpu, "mvendorid"));
    model.model = withoutPrefix(info.value(cpu, "marchid"));
    model.stepping = withoutPrefix(info.value(cpu, "mimpid"));
    return model;
}

// SPARC, whose "type" is the kind of machine.
CpuModel sparcModel(const CpuInfo& info, int cpu) {
    CpuModel model;
    model.name = info.value(cpu, "cpu");
    model.family = info.value(cpu, "type");
    return model;
}

// Alpha and MIPS.
CpuModel cpuModelModel(const CpuInfo& info, int cpu) {
    CpuModel model;
    model.name = info.value(cpu, "cpu model");
    if (info.value(cpu, "cpu") == "Alpha") model.name = "Alpha " + model.name;
    model.stepping = info.value(cpu, "cpu revision");
    return model;
}

// The value of the first of these keys that has one.
std::string_view firstValue(const CpuInfo& info, int cpu, std::initializer_list<std::string_view> keys) {
    for (const std::string_view key : keys) {
        const std::string_view value = info.value(cpu, key);
        if (!value.empty()) return value;
    }
    return {};
}

CpuModel loongArchModel(const CpuInfo& info, int cpu) {
    CpuModel model;
    // Kernels of makers have the keys in lower case.
    model.name = firstValue(info, cpu, {"Model Name", "model name"});
    model.family = firstValue(info, cpu, {"CPU Family", "cpu family"});
    constexpr std::string_view kMaker = "Loongson";
    if (model.family.starts_with(kMaker)) model.manufacturer = kMaker;
    // "3A5000" of "Loongson-3A5000"
    if (model.name.starts_with(kMaker))
        model.model = model.name.substr(std::min(model.name.size(), kMaker.size() + 1));
    model.stepping = withoutPrefix(info.value(cpu, "CPU Revision"));
    return model;
}

// IA-64. Old kernels have the name of the family in place of its number, and no name of the model.
CpuModel itaniumModel(const CpuInfo& info, int cpu) {
    CpuModel model;
    model.name = info.value(cpu, "model name");
    model.manufacturer = info.value(cpu, "vendor");
    model.family = info.value(cpu, "family");
    model.model = info.value(cpu, "model");
    model.stepping = info.value(cpu, "revision");
    if (model.name.empty() && !readCount(model.family)) model.name = model.family;
    return model;
}

CpuModel x86Model(const CpuInfo& info, int cpu) {
    CpuModel model;
    model.name = firstValue(info, cpu, {"model name", "Model Name", "cpu"});
    model.manufacturer = info.value(cpu, "vendor_id");
    model.family = info.value(cpu, "cpu family");
    model.model = info.value(cpu, "model");
    model.stepping = info.value(cpu, "stepping");
    if (model.stepping == "unknown") model.stepping.clear();
    return model;
}

}  // namespace

CpuModel readCpuModel(const CpuInfo& info, int cpu) {
    const auto value = [&info, cpu](std::string_view key) { return info.value(cpu, key); };
    if (!value("CPU implementer").empty()) return armModel(info, cpu);
    if (value("vendor_id") == "IBM/S390") return s390Model(info, cpu);
    if (value("isa").starts_with("rv")) return riscvModel(info, cpu);
    if (value("revision").find("(pvr") != std::string_view::npos) return powerModel(info, cpu);
    if (value("arch") == "IA-64") return itaniumModel(info, cpu);
    if (value("type").starts_with("sun4")) return sparcModel(info, cpu);
    if (!value("ISA").empty() || value("isa").starts_with("loongarch")) return loongArchModel(info, cpu);
    if (!value("cpu model").empty()) return cpuModelModel(info, cpu);
    return x86Model(info, cpu);
}

std::string microcode(const Root& root, const CpuInfo& info, int cpu) {
    const std::string_view listed = info.value(cpu, "microcode");
    if (!listed.empty()) return std::string(listed);
    return root.readLine("/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/microcode/version");
}

}  // namespace toolkit::quorvah
