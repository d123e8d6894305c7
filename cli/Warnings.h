#pragma once

#include <string>

#include "cli/Software.h"

namespace zavcli {

// Understands a warning as the library hands it out. One that is not XML is kept as text.
Warning readWarning(const std::string& xml);

// The warning in words, such as "warning: /etc/x: cannot be opened: permission denied (signature GUID, leaf
// f)".
std::string warningText(const Warning& warning);

}  // namespace zavcli
