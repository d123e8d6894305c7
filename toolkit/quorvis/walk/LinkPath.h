#pragma once

#include <functional>
#include <string>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvis {

// Whether the way that `path` takes through symbolic links comes to a place of which `isThere` holds. Nothing below
// such a place is looked at.
bool linkLeadsInto(const Root& root, const std::string& path,
                   const std::function<bool(const std::string& place)>& isThere);

}  // namespace toolkit::quorvis
