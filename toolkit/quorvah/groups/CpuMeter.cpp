#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <thread>

#include "schema/groups/CpuMeter.h"
#include "toolkit/machine/text/IsoTime.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/CpuTimes.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KernelInfo.h"

namespace toolkit::quorvah {

namespace {

constexpr std::chrono::milliseconds kInterval(200);
constexpr std::uint64_t kUsualTicks = 100;

CpuStatistics statistics(const Root& root) {
    const long ticks = root.live() ? ::sysconf(_SC_CLK_TCK) : 0;
    return readCpuStatistics(root.read("/proc/stat").value_or(""),
                             ticks > 0 ? static_cast<std::uint64_t>(ticks) : kUsualTicks);
}

// A scan of all groups does not wait, nor does one that omits what changes. The load is then the mean since the start of
// the system.
bool waits(const GatheringContext& context) {
    return context.root().live() && !context.options().noVolatile &&
           context.summary.requested.size() < allGroups().size();
}

// Whether the line is that of a single CPU, and not of all together.
bool isSingle(const CpuTimes& times) {
    return times.name.size() > 3;
}

constexpr const char* kSources[] = {"/proc/stat"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    CpuStatistics before;
    if (waits(context)) {
        before = statistics(root);
        std::this_thread::sleep_for(kInterval);
    }
    const CpuStatistics now = statistics(root);
    if (now.cpus.empty() || isSingle(now.cpus.front())) return;
    const CpuTimes& all = now.cpus.front();
    Instance& meter = data.add("total");
    meter.set("LoadPercentage", loadBetween(before.cpus.empty() ? CpuTimes() : before.cpus.front(), all));
    const std::optional<std::int64_t> time = observationTime(root);
    if (time) meter.set("SampleTime", isoTime(*time));
    meter.set("UserModeTime", sum(all.user, all.nice));
    meter.set("KernelModeTime", sum(all.system, sum(all.irq.value_or(0), all.softIrq.value_or(0))));
    if (!before.cpus.empty()) meter.set("SampleInterval", kInterval.count());
    meter.set("IdleTime", sum(all.idle, all.ioWait.value_or(0)));
    meter.set("OnlineProcessors", std::ranges::count_if(now.cpus, isSingle));
    meter.set("RunQueue", now.running);
    const std::string loads = root.readLine("/proc/loadavg");
    const std::string load = loads.substr(0, loads.find(' '));
    const std::size_t point = load.find('.');
    const bool decimal =
        point != std::string::npos && readCount(load.substr(0, point)) && readCount(load.substr(point + 1));
    if (decimal) meter.set("LoadAverage1", load);
}

}  // namespace

constexpr Group kCpuMeter{.displayName = "CpuMeter",
                          .xmlName = "CpuMeter",
                          .fields = schema::kCpuMeter.fields,
                          .gather = gather,
                          .sources = kSources};

}  // namespace toolkit::quorvah
