#include "kest/ForksHeldOff.h"

#include <pthread.h>

#include <mutex>

namespace kest {

namespace {

constinit std::mutex forks;

[[maybe_unused]] const int atForks =
    pthread_atfork([] { forks.lock(); }, [] { forks.unlock(); }, [] { forks.unlock(); });

}  // namespace

ForksHeldOff::ForksHeldOff() {
    forks.lock();
}

ForksHeldOff::~ForksHeldOff() {
    forks.unlock();
}

}  // namespace kest
