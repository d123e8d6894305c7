#pragma once

#include <chrono>
#include <functional>

#include "toolkit/quorvah/report/GroupResult.h"

namespace toolkit::quorvah {

// The time that gathering may take.
struct Limits {
    std::chrono::milliseconds group{10'000};
    std::chrono::milliseconds run{60'000};
};

// Receives the result of each group, in the order of the groups.
using OnResult = std::function<void(GroupResult&& result)>;

}  // namespace toolkit::quorvah
