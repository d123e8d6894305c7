#pragma once

#include <span>

#include "toolkit/machine/files/OutputFile.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/report/GroupResult.h"

namespace toolkit::quorvah {

// Renders the instances as they are written to the output file, in ASCII: one element per instance, with one element
// per field. Unknown fields are empty elements. `pretty` adds line breaks and indentation; otherwise there is no
// white space between elements.
GroupResult render(const GroupData& data, bool pretty);

// Writes the results as one XML document. REQUIRES: `pretty` is the same as in render().
void writeDocument(std::span<const GroupResult> results, bool pretty, const TextSink& sink);

}  // namespace toolkit::quorvah
