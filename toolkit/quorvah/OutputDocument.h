#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "toolkit/quorvah/GroupResult.h"
#include "toolkit/quorvah/Report.h"

namespace toolkit::quorvah {

// A report as it goes into the output file: one element per instance, and in it one element per field,
// unknown fields empty, in pure ASCII. `pretty` breaks and indents the lines; else no white space stands
// between elements.
GroupResult render(const Report& report, bool pretty);

// The results as one XML document, in pieces that follow each other; `pretty` as they were rendered. The pieces live as
// long as the results.
std::vector<std::string_view> outputDocument(std::span<const GroupResult> results, bool pretty);

}  // namespace toolkit::quorvah
