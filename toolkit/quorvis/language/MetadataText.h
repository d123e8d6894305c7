#pragma once

#include <optional>
#include <string>

#include "toolkit/quorvis/language/Element.h"

namespace toolkit::quorvis {

// What stands within an element, as XML in pure ASCII. None when a name in it is not ASCII and so cannot be written.
std::optional<std::string> innerXml(const Element& element);

}  // namespace toolkit::quorvis
