#include "cli/diff/InstancePairs.h"

#include <deque>
#include <unordered_map>
#include <unordered_set>

namespace zavcli {

InstancePairs pairInstances(const std::vector<const Instance*>& before,
                            const std::vector<const Instance*>& after,
                            const std::function<std::string(const Instance&)>& keyOf) {
    std::unordered_map<std::string, std::deque<const Instance*>> waiting;
    for (const Instance* const instance : before) waiting[keyOf(*instance)].push_back(instance);
    InstancePairs pairs;
    std::unordered_set<const Instance*> paired;
    for (const Instance* const instance : after) {
        const auto found = waiting.find(keyOf(*instance));
        if (found == waiting.end() || found->second.empty()) {
            pairs.added.push_back(instance);
            continue;
        }
        pairs.same.push_back({found->second.front(), instance});
        paired.insert(found->second.front());
        found->second.pop_front();
    }
    for (const Instance* const instance : before) {
        if (!paired.contains(instance)) pairs.removed.push_back(instance);
    }
    return pairs;
}

}  // namespace zavcli
