#include "sw/ZAVSwResult.h"

#include <algorithm>
#include <cwchar>
#include <iterator>

namespace zav {

namespace {

bool sortsBefore(const SWVariable& one, const SWVariable& other) {
    return std::wcscmp(one.name, other.name) < 0;
}

bool notBefore(const SWVariable& one, const SWVariable& other) {
    return !sortsBefore(one, other);
}

// Removes all but the last of each run of equal names.
void removeOverridden(std::vector<SWVariable>& sorted) {
    auto end = sorted.begin();
    for (auto next = sorted.begin(); next != sorted.end(); ++next) {
        const auto following = std::next(next);
        if (following == sorted.end() || sortsBefore(*next, *following)) *end++ = *next;
    }
    sorted.erase(end, sorted.end());
}

}  // namespace
}  // namespace zav

void ZAVSwResult::setVariables(const std::vector<zav::SWVariable>& inOrder) {
    variables.assign(inOrder.begin(), inOrder.end());
    // Scanners usually write them in order.
    if (std::adjacent_find(variables.begin(), variables.end(), zav::notBefore) == variables.end()) return;
    std::stable_sort(variables.begin(), variables.end(), zav::sortsBefore);
    zav::removeOverridden(variables);
}

void ZAVSwResult::generateVariablesNames() {
    variableNames = kest::mallocArray<const wchar_t*>(variables.size());
    const wchar_t** next = variableNames.get();
    for (const zav::SWVariable& variable : variables) *next++ = variable.name;
}

const char* ZAVSwResult::findValue(const wchar_t* variable) const {
    const zav::SWVariable wanted = {variable, nullptr};
    const auto found = std::lower_bound(variables.begin(), variables.end(), wanted, zav::sortsBefore);
    const bool same = found != variables.end() && std::wcscmp(found->name, variable) == 0;
    return same ? found->value : nullptr;
}
