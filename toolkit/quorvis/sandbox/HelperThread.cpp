#include "toolkit/quorvis/sandbox/HelperThread.h"

#include <utility>

namespace toolkit::quorvis {

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
