#include <string>
#include <vector>

#include "schema/groups/ParallelPort.h"
#include "toolkit/machine/text/HexDigits.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

namespace {

const std::string kPorts = "/proc/sys/dev/parport/";

std::vector<std::string> modesOf(std::string_view line) {
    std::vector<std::string> modes;
    while (!line.empty()) modes.emplace_back(trimmed(takeField(line, ',')));
    return modes;
}

constexpr const char* kSources[] = {"/proc/sys/dev"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    for (const std::string& name : root.list(kPorts)) {
        if (!name.starts_with("parport")) continue;
        const std::string directory = kPorts + name + "/";
        Instance& port = data.add(name);
        // The channel is "none" or -1 if the port has none.
        const std::string dma = root.readLine(directory + "dma");
        if (!dma.empty()) port.set("DMASupport", readCount(dma).has_value());
        port.set("Capabilities", modesOf(root.readLine(directory + "modes")));
        // The base address, then that of the extended registers.
        const std::string addresses = root.readLine(directory + "base-addr");
        std::string_view rest = addresses;
        const Count address = readCount(nextWord(rest));
        if (address.value_or(0) != 0) port.set("IoAddress", hexDigits(*address, *address > 0xFFFF ? 16 : 4));
        port.set("Irq", root.readCount(directory + "irq"));
        port.set("DmaChannel", readCount(dma));
    }
    // Ports show only while their driver is loaded.
    if (!root.isDirectory(kPorts) && root.isDirectory("/proc/sys")) data.notApplicable("no-driver");
}

}  // namespace

constexpr Group kParallelPort{.displayName = "Parallel Port",
                              .xmlName = "ParallelPort",
                              .fields = schema::kParallelPort.fields,
                              .gather = gather,
                              .sources = kSources};

}  // namespace toolkit::quorvah
