#include "toolkit/quorvis/sandbox/Sandbox.h"

#include "toolkit/machine/sandbox/Sandbox.h"
#include "toolkit/quorvis/sandbox/HelperThread.h"

namespace toolkit::quorvis {

std::string enterSandbox(const Settings& settings) {
    constexpr std::uint64_t kLeastRoom = std::uint64_t{64} << 20;
    constexpr std::uint64_t kRoomOfThread = 2 * HelperThread::kStackSize;
    SandboxNeeds needs;
    needs.memory = settings.evaluation.memoryLimit;
    needs.leastMemory = kLeastRoom + settings.evaluation.jobs * kRoomOfThread;
    return toolkit::enterSandbox(needs);
}

}  // namespace toolkit::quorvis
