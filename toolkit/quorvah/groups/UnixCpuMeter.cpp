#include <unistd.h>

#include "schema/groups/UnixCpuMeter.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/CpuTimes.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

namespace {

constexpr std::uint64_t kUsualTicks = 100;

constexpr const char* kSources[] = {"/proc/stat"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const long ticks = root.live() ? ::sysconf(_SC_CLK_TCK) : 0;
    const CpuStatistics statistics = readCpuStatistics(
        root.read("/proc/stat").value_or(""), ticks > 0 ? static_cast<std::uint64_t>(ticks) : kUsualTicks);
    for (const CpuTimes& times : statistics.cpus) {
        if (times.name == "cpu") continue;
        Instance& meter = data.add(times.name);
        meter.set("UserModeTime", times.user);
        meter.set("KernelModeTime", times.system);
        meter.set("NiceTime", times.nice);
        meter.set("IdleTime", times.idle);
        meter.set("IoWaitTime", times.ioWait);
        meter.set("IrqTime", times.irq);
        meter.set("SoftIrqTime", times.softIrq);
        meter.set("StealTime", times.steal);
        meter.set("GuestTime", times.guest);
    }
}

}  // namespace

constexpr Group kUnixCpuMeter{.displayName = "UnixCpuMeter",
                              .xmlName = "UnixCpuMeter",
                              .fields = schema::kUnixCpuMeter.fields,
                              .gather = gather,
                              .sources = kSources};

}  // namespace toolkit::quorvah
