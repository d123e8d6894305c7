#include "toolkit/quorvis/sandbox/Sandbox.h"

#include "toolkit/machine/sandbox/Sandbox.h"
#include "toolkit/quorvis/sandbox/HelperThread.h"

namespace toolkit::quorvis {

std::string enterSandbox(const Settings& settings) {
    constexpr std::uint64_t kMinMemory = std::uint64_t{64} << 20;
    constexpr std::uint64_t kMemoryOfThread = 2 * HelperThread::kStackSize;
    SandboxNeeds needs;
    needs.memory = settings.evaluation.memoryLimit;
    needs.leastMemory = kMinMemory + settings.evaluation.jobs * kMemoryOfThread;
    return toolkit::enterSandbox(needs);
}

}  // namespace toolkit::quorvis
