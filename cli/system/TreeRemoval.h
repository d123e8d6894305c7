#pragma once

namespace zavcli {

// Removes a directory with all that is in it, or a file; links are not followed. `name` is looked up in the open
// directory `directory`, which may be AT_FDCWD. Calls only what a signal handler may call, and takes no memory.
void removeTree(int directory, const char* name);

}  // namespace zavcli
