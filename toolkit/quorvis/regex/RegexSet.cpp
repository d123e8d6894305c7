#include "toolkit/quorvis/regex/RegexSet.h"

namespace toolkit::quorvis {

namespace {

constexpr std::int64_t kMostMemory = std::int64_t{64} << 20;

re2::RE2::Options optionsFor(re2::RE2::Options::Encoding encoding) {
    re2::RE2::Options options;
    options.set_encoding(encoding);
    options.set_max_mem(kMostMemory);
    options.set_log_errors(false);
    return options;
}

}  // namespace

RegexSet::RegexSet(std::span<const std::string_view> patterns, re2::RE2::Options::Encoding encoding)
    : set_(optionsFor(encoding), re2::RE2::UNANCHORED) {
    for (const std::string_view pattern : patterns)
        ready_ = ready_ && set_.Add({pattern.data(), pattern.size()}, nullptr) >= 0;
    ready_ = ready_ && set_.Compile();
}

std::optional<std::vector<int>> RegexSet::matching(std::string_view text) const {
    if (!ready_) return std::nullopt;
    std::vector<int> hits;
    re2::RE2::Set::ErrorInfo error{re2::RE2::Set::kNoError};
    const bool any = set_.Match({text.data(), text.size()}, &hits, &error);
    if (!any && error.kind != re2::RE2::Set::kNoError) return std::nullopt;
    return hits;
}

}  // namespace toolkit::quorvis
