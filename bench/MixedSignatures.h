#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zavbench {

// Writes a feed of signatures of all kinds that deal with packages and files, for products of which `present` stand
// in a tree that makeFileTree made and the others do not; `packages` as packageNames gives them. Every pattern is
// looked for in the whole of /usr, /opt, /srv or /home.
void writeMixedSignatures(const std::string& path, int count, int present,
                          const std::vector<std::string>& packages);

}  // namespace zavbench
