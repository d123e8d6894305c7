#pragma once

namespace toolkit::quorvis {

// Whether an open file, which may be a mere handle, lies in a file system that the kernel makes up: of processes,
// devices, debugging, control groups and so on, wherever it is mounted.
bool isMadeByKernel(int descriptor);

}  // namespace toolkit::quorvis
