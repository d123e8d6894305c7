#pragma once

#include <span>
#include <string>

#include "toolkit/quorvah/Report.h"

namespace quorvah {

// The reports as an XML document in pure ASCII: one element per instance, and in it one element per field,
// unknown fields empty. `pretty` breaks and indents the lines; else no white space stands between elements.
std::string outputDocument(std::span<const Report> reports, bool pretty);

}  // namespace quorvah
