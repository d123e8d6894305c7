// Plain expressions: whatever the recogniser accepts without compiling, RE2 compiles with the same number of groups.
#include <re2/re2.h>

#include <cstdint>
#include <cstdlib>

#include "toolkit/quorvis/regex/Regex.h"

namespace {

void must(bool holds) {
    if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    namespace quorvis = toolkit::quorvis;
    const std::string_view pattern(reinterpret_cast<const char*>(data), size);
    const std::optional<int> groups = quorvis::groupsOfPlainRegex(pattern);
    if (!groups) return 0;
    for (const char* const flags : {"", "ims"}) {
        std::string problem;
        const RE2* const regex = quorvis::compileRegex(pattern, flags, problem);
        must((regex != nullptr) == (*groups <= quorvis::kMaxGroups));
        if (regex != nullptr) must(regex->NumberOfCapturingGroups() == *groups);
    }
    quorvis::forgetRegexes();
    return 0;
}
