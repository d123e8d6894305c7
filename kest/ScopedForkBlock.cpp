#include "kest/ScopedForkBlock.h"

#include <pthread.h>

#include <mutex>

namespace kest {

namespace {

constinit std::mutex forks;

[[maybe_unused]] const int atForks =
    pthread_atfork([] { forks.lock(); }, [] { forks.unlock(); }, [] { forks.unlock(); });

}  // namespace

ScopedForkBlock::ScopedForkBlock() {
    forks.lock();
}

ScopedForkBlock::~ScopedForkBlock() {
    forks.unlock();
}

}  // namespace kest
