#include <string>

#include "schema/groups/Processor.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/CoreTypes.h"
#include "toolkit/quorvah/sources/CpuFrequency.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/CpuModel.h"
#include "toolkit/quorvah/sources/CpuTopology.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

// The width of an address in bits.
std::string_view addressWidth(std::string_view machine) {
    if (machine.empty()) return {};
    const bool wide =
        machine.find("64") != std::string_view::npos || machine == "s390x" || machine == "alpha";
    return wide ? "64" : "32";
}

// POWER8 and later have no name of their own in uname, but all of them are wide.
std::string_view addressWidth(std::string_view machine, const CpuModel& model) {
    if (machine.empty() && model.name.starts_with("POWER")) return "64";
    return addressWidth(machine);
}

// Lists are separated by blanks, or by commas on IA-64 ("branchlong, 16-byte atomic ops") and SPARC.
std::vector<std::string> flagsOf(const CpuInfo& info, int cpu) {
    for (const char* const key : {"flags", "Features", "features", "isa", "cpucaps"}) {
        std::string_view flags = info.value(cpu, key);
        if (flags.find(',') == std::string_view::npos) {
            if (!flags.empty()) return wordsOf(flags);
            continue;
        }
        std::vector<std::string> words;
        while (!flags.empty()) words.emplace_back(trimmed(takeField(flags, ',')));
        return words;
    }
    return {};
}

void setPlace(const LogicalCpu& cpu, Instance& processor) {
    processor.set("PhysicalPackageId", cpu.package);
    processor.set("DieId", cpu.die);
    processor.set("ClusterId", cpu.cluster);
    processor.set("CoreId", cpu.core);
    processor.set("ThreadIndex", cpu.thread);
    processor.set("NumaNode", cpu.node);
}

void setCaches(const LogicalCpu& cpu, Instance& processor) {
    processor.set("L1dCacheSize", cacheSize(cpu, 1, "Data"));
    processor.set("L1iCacheSize", cacheSize(cpu, 1, "Instruction"));
    processor.set("L2CacheSize", cacheSize(cpu, 2));
    processor.set("L3CacheSize", cacheSize(cpu, 3));
    processor.set("L4CacheSize", cacheSize(cpu, 4));
}

constexpr const char* kSources[] = {"/proc/cpuinfo", "/sys/devices/system/cpu"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const CpuInfo info(root.read("/proc/cpuinfo").value_or(""));
    const std::string machine = readKernelInfo(root).machine;
    const std::vector<LogicalCpu> cpus = readCpus(root, info);
    const CoreTypes types(root, cpus);
    for (const LogicalCpu& cpu : cpus) {
        Instance& processor = data.add("cpu" + std::to_string(cpu.number));
        const CpuModel model = readCpuModel(info, cpu.number);
        processor.set("Name", model.name);
        processor.set("Manufacturer", model.manufacturer);
        processor.set("Family", model.family);
        processor.set("Model", model.model);
        processor.set("Stepping", model.stepping);
        processor.set("MaxClockSpeed", maxClock(root, info, cpu.number));
        processor.set("CurrentClockSpeed", currentClock(root, info, cpu.number));
        processor.set("AddressWidth", addressWidth(machine, model));
        if (cpu.online) processor.set("EnabledState", *cpu.online ? "Enabled" : "Disabled");
        processor.set("Architecture", machine);
        setPlace(cpu, processor);
        processor.set("CoreType", types.of(cpu.number));
        processor.set("Flags", flagsOf(info, cpu.number));
        processor.set("Microcode", microcode(root, info, cpu.number));
        setCaches(cpu, processor);
    }
}

}  // namespace

constexpr Group kProcessor{.displayName = "Processor",
                           .xmlName = "Processor",
                           .fields = schema::kProcessor.fields,
                           .gather = gather,
                           .sources = kSources};

}  // namespace toolkit::quorvah
