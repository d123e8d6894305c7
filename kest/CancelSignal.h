#pragma once

namespace kest {

// Keeps the signal from the calling thread by which the C library cancels threads that may be cancelled at any
// time, and lets it through again.
void holdCancelSignal();
void releaseCancelSignal();

}  // namespace kest
