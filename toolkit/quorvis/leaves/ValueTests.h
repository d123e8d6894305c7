// The tests of values that several kinds of leaves share.
#pragma once

#include <string>
#include <string_view>

#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/versions/Version.h"

namespace re2 {
class RE2;
}

namespace toolkit::quorvis {

// The query's regex. Null when it is invalid; then the result says so.
const re2::RE2* regexOf(const Query& query, LeafResult& result);

// Whether the attribute is not given or equals the text.
bool isOrAny(const Query& query, Attribute attribute, std::string_view text);

// Whether the query has one of the version tests: equals, atLeast, above, atMost, below.
bool hasVersionTest(const Query& query);

// Whether `version` passes all version tests of the query, in the scheme that the query names or else in
// `defaultScheme`. Unknown when a version cannot be compared.
Truth evaluateVersionTests(const Query& query, Scheme defaultScheme, std::string_view version);

// The same for a leaf: a version that cannot be compared does not pass and leaves the result incomplete.
bool passesVersionTests(const Query& query, Scheme defaultScheme, std::string_view version,
                        const std::string& path, LeafResult& result);

// Whether the value passes the query's regex and its version tests, in the scheme "dotted" by default.
bool passesValueTests(const Query& query, std::string_view value, const std::string& path,
                      LeafResult& result);

}  // namespace toolkit::quorvis
