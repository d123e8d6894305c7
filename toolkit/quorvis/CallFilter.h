#pragma once

namespace toolkit::quorvis {

// From now on refuses this process the system calls that a reader of files has no use for. False where this kind of
// processor is not known, and when the kernel does not take the filter.
bool filterSystemCalls();

}  // namespace toolkit::quorvis
