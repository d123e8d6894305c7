#include "toolkit/quorvah/scan/GatheringSandbox.h"

#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "toolkit/machine/sandbox/Sandbox.h"

namespace toolkit::quorvah {

SandboxIncomplete::SandboxIncomplete(const std::string& missing)
    : std::runtime_error("the sandbox is incomplete: " + missing +
                         " (with --sandbox optional the scan continues)") {}

std::string enterGatheringSandbox() {
    SandboxNeeds needs;
    needs.memory = std::uint64_t{1} << 30;
    needs.leastMemory = std::uint64_t{256} << 20;
    needs.calls.asksKernel = true;  // netlink, and ioctl for the drivers of network adapters
    needs.calls.children = true;    // to ask file systems that may not answer
    return toolkit::enterSandbox(needs);
}

void reportIncompleteSandbox(GatheringContext& context, const std::string& missing) {
    if (!context.options().sandboxOptional) throw SandboxIncomplete(missing);
    std::vector<std::string>& warnings = context.summary.warnings;
    std::string warning = "the sandbox is incomplete: " + missing;
    if (std::ranges::find(warnings, warning) != warnings.end()) return;
    std::fprintf(stderr, "quorvah: %s\n", warning.c_str());
    warnings.push_back(std::move(warning));
}

}  // namespace toolkit::quorvah
