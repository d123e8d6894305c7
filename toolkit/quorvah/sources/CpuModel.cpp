#include "toolkit/quorvah/sources/CpuModel.h"

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/ArmCpuIds.h"

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
    model.manufacturer = armImplementer(implementer);
    model.family = info.value(cpu, "CPU architecture");
    model.model = part;
    model.stepping = armStepping(info.value(cpu, "CPU variant"), info.value(cpu, "CPU revision"));
    return model;
}

// Such as "POWER9 (architected), altivec supported" and "2.2 (pvr 004e 1202)".
CpuModel powerModel(const CpuInfo& info, int cpu) {
    CpuModel model;
    std::string_view name = info.value(cpu, "cpu");
    model.name = takeField(name, ',');
    model.manufacturer = "IBM";
    std::string_view revision = info.value(cpu, "revision");
    model.stepping = nextWord(revision);
    if (nextWord(revision) == "(pvr") model.model = nextWord(revision);
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

CpuModel riscvModel(const CpuInfo& info, int cpu) {
    CpuModel model;
    model.name = info.value(cpu, "uarch");
    model.manufacturer = withoutPrefix(info.value(cpu, "mvendorid"));
    model.model = withoutPrefix(info.value(cpu, "marchid"));
    model.stepping = withoutPrefix(info.value(cpu, "mimpid"));
    return model;
}

CpuModel x86Model(const CpuInfo& info, int cpu) {
    CpuModel model;
    model.name = info.value(cpu, "model name");
    if (model.name.empty()) model.name = info.value(cpu, "Model Name");
    model.manufacturer = info.value(cpu, "vendor_id");
    model.family = info.value(cpu, "cpu family");
    model.model = info.value(cpu, "model");
    model.stepping = info.value(cpu, "stepping");
    return model;
}

}  // namespace

CpuModel readCpuModel(const CpuInfo& info, int cpu) {
    if (!info.value(cpu, "CPU implementer").empty()) return armModel(info, cpu);
    if (info.value(cpu, "vendor_id") == "IBM/S390") return s390Model(info, cpu);
    if (!info.value(cpu, "isa").empty()) return riscvModel(info, cpu);
    if (info.value(cpu, "cpu").starts_with("POWER")) return powerModel(info, cpu);
    return x86Model(info, cpu);
}

std::string microcode(const Root& root, const CpuInfo& info, int cpu) {
    const std::string_view listed = info.value(cpu, "microcode");
    if (!listed.empty()) return std::string(listed);
    return root.readLine("/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/microcode/version");
}

}  // namespace toolkit::quorvah
