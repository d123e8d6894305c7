#pragma once

#include <string>

namespace zavcli {

// A paragraph for the help with the places of the scanners, signatures and schemas of the installation to which this command
// belongs. Empty in a directory of a build, which has them elsewhere.
std::string installedPaths();

}  // namespace zavcli
