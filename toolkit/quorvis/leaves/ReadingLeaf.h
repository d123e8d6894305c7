// What the leaves that look into a file have in common.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/quorvis/leaves/Leaf.h"
#include "toolkit/quorvis/versions/Version.h"

namespace re2 {
class RE2;
}

namespace toolkit::quorvis {

// The content of the file at `path`. Null when there is none, and when it cannot be read, which fails in the
// result.
std::shared_ptr<const std::string> contentOf(const std::string& path, Machine& machine, LeafResult& result);

// The query's regex. Null when it is wrong, which fails in the result.
const re2::RE2* regexOf(const Query& query, LeafResult& result);

// Whether the attribute is not given, or is this text.
bool isOrAny(const Query& query, Attribute attribute, std::string_view text);

// Whether a value passes the query's version tests and, where it has one, its regex. What cannot be told
// fails in the result.
bool passesVersion(const Query& query, Scheme usual, std::string_view version, const std::string& path,
                   LeafResult& result);
bool passesTests(const Query& query, std::string_view value, const std::string& path, LeafResult& result);

}  // namespace toolkit::quorvis
