#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zavbench {

// Writes signatures of all kinds for packages and files. They describe products of which `present` are in a tree made
// by makeFileTree(). `packages` are names from packageNames(). Every pattern searches the whole of /usr, /opt, /srv
// or /home.
void writeMixedSignatures(const std::string& path, int count, int present,
                          const std::vector<std::string>& packages);

}  // namespace zavbench
