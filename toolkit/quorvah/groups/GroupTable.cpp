#include "toolkit/quorvah/groups/GroupTable.h"

#include <algorithm>

namespace toolkit::quorvah {

namespace {

// The groups that no file of groups/ defines.
#define DEFINE_NOTHING(name)
#define DEFINE_UNSUPPORTED(name, display) constexpr Group k##name{.displayName = (display), .xmlName = #name};
#define DEFINE_ELSEWHERE(name, display, reason) \
    constexpr Group k##name{.displayName = (display), .xmlName = #name, .otherPlatform = (reason)};
QUORVAH_GROUPS(DEFINE_NOTHING, DEFINE_UNSUPPORTED, DEFINE_ELSEWHERE)

#define ADDRESS_OF(name, ...) &k##name,
constexpr const Group* kTable[] = {QUORVAH_GROUPS(ADDRESS_OF, ADDRESS_OF, ADDRESS_OF)};

}  // namespace

std::span<const Group* const> allGroups() {
    return kTable;
}

const Group* findGroup(std::string_view name) {
    const auto* const found = std::ranges::find_if(
        kTable, [name](const Group* group) { return name == group->displayName || name == group->xmlName; });
    return found == std::end(kTable) ? nullptr : *found;
}

}  // namespace toolkit::quorvah
