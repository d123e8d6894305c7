#pragma once

namespace zavcli {

// Ends all processes that this one has started, directly or through others: asks them first, and kills after a second
// what does not end. Calls only what a signal handler may call.
// REQUIRES: nothing waits for one of them any more, since their statuses are taken here.
void endDescendants();

}  // namespace zavcli
