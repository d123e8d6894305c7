#pragma once

#include <functional>

namespace toolkit::quorvis {

// Called again and again by whoever goes through much of what a stranger wrote. It throws when that has to end.
using Tick = std::function<void()>;

}  // namespace toolkit::quorvis
