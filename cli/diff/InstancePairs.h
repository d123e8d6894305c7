// Finds the instances of two inventories that stand for the same thing.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/scan/HardwareInventory.h"

namespace zavcli {

struct InstancePairs {
    struct Pair {
        const Instance* before;
        const Instance* after;
    };
    std::vector<Pair> same;  // in the order of the later instances
    std::vector<const Instance*> removed;
    std::vector<const Instance*> added;
};

// Pairs the instances that have the same key. Several instances with one key are paired in their order.
InstancePairs pairInstances(const std::vector<const Instance*>& before,
                            const std::vector<const Instance*>& after,
                            const std::function<std::string(const Instance&)>& keyOf);

}  // namespace zavcli
