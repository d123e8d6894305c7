#include "kest/Mutex.h"

namespace kest {

int Mutex::lock() {
    mutex_.lock();
    return 0;
}

int Mutex::unlock() {
    mutex_.unlock();
    return 0;
}

}  // namespace kest
