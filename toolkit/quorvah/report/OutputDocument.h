#pragma once

#include <span>

#include "toolkit/machine/files/OutputFile.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/report/GroupResult.h"

namespace toolkit::quorvah {

// A report's result with its instances as they go into the output file: one element per instance, and in it one
// element per field, unknown fields empty, in pure ASCII. `pretty` breaks and indents the lines; else no white space
// stands between elements.
GroupResult render(const GroupData& data, bool pretty);

// Writes the results as one XML document; `pretty` as they were rendered.
void writeDocument(std::span<const GroupResult> results, bool pretty, const TextSink& sink);

}  // namespace toolkit::quorvah
