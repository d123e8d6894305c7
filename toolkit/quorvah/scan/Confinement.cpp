#include "toolkit/quorvah/scan/Confinement.h"

#include "toolkit/machine/sandbox/Sandbox.h"

namespace toolkit::quorvah {

Unconfined::Unconfined(const std::string& missing)
    : std::runtime_error("the sandbox is not whole here: " + missing +
                         " (--sandbox optional allows to go on)") {}

std::string enterSandbox() {
    SandboxNeeds needs;
    needs.memory = std::uint64_t{1} << 30;
    needs.leastMemory = std::uint64_t{256} << 20;
    needs.calls.asksKernel = true;  // for addresses, routes and the drivers of network adapters
    needs.calls.children = true;    // for asking file systems that may never answer
    return toolkit::enterSandbox(needs);
}

}  // namespace toolkit::quorvah
