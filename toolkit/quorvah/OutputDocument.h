#pragma once

#include <span>
#include <string>

#include "toolkit/quorvah/GroupResult.h"
#include "toolkit/quorvah/Report.h"

namespace toolkit::quorvah {

// A report as it goes into the output file: one element per instance, and in it one element per field,
// unknown fields empty, in pure ASCII. `pretty` breaks and indents the lines; else no white space stands
// between elements.
GroupResult render(const Report& report, bool pretty);

// The results as one XML document; `pretty` as they were rendered.
std::string outputDocument(std::span<const GroupResult> results, bool pretty);

}  // namespace toolkit::quorvah
