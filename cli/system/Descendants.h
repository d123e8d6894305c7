#pragma once

namespace zavcli {

// Ends all processes that this one has started, directly or through others: sends SIGTERM, and SIGKILL to those that
// are still running after a second. Async-signal-safe.
// REQUIRES: no other code waits for any of them, because their exit statuses are collected here.
void endDescendants();

}  // namespace zavcli
