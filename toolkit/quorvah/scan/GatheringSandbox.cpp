#include "toolkit/quorvah/scan/GatheringSandbox.h"

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

}  // namespace toolkit::quorvah
