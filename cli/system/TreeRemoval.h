#pragma once

namespace zavcli {

// Removes a directory with its content, or a file, without following links. `name` is relative to the open directory
// `directory`, which may be AT_FDCWD. Async-signal-safe.
void removeTree(int directory, const char* name);

}  // namespace zavcli
