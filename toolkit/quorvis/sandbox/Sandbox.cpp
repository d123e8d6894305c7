#include "toolkit/quorvis/sandbox/Sandbox.h"

#include <utility>

#include "toolkit/machine/sandbox/Sandbox.h"

namespace toolkit::quorvis {

std::string enterSandbox(const Settings& settings) {
    constexpr std::uint64_t kMinMemory = std::uint64_t{64} << 20;
    constexpr std::uint64_t kMemoryOfThread = 2 * HelperThread::kStackSize;
    SandboxNeeds needs;
    needs.memory = settings.evaluation.memoryLimit;
    needs.leastMemory = kMinMemory + settings.evaluation.jobs * kMemoryOfThread;
    return toolkit::enterSandbox(needs);
}

HelperThread::HelperThread(std::function<void()> work) : work_(std::move(work)) {
    const auto run = [](void* helper) -> void* {
        static_cast<HelperThread*>(helper)->work_();
        return nullptr;
    };
    pthread_attr_t attributes;
    if (::pthread_attr_init(&attributes) != 0) return;
    ::pthread_attr_setstacksize(&attributes, kStackSize);
    started_ = ::pthread_create(&thread_, &attributes, run, this) == 0;
    ::pthread_attr_destroy(&attributes);
}

HelperThread::~HelperThread() {
    if (started_) ::pthread_join(thread_, nullptr);
}

}  // namespace toolkit::quorvis
