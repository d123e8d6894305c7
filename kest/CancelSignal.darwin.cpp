#include "kest/CancelSignal.h"

namespace kest {

void holdCancelSignal() {}

void releaseCancelSignal() {}

}  // namespace kest
