#pragma once

#include "toolkit/quorvis/language/Complaints.h"
#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/LeafTable.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// The leaf that an element of the signatures file describes.
Leaf readLeaf(const Element& element, const LeafRules& rules, const Settings& settings,
              Complaints& complaints);

// The text with its variables.
Template readTemplate(const Element& element, std::string_view attribute, std::string_view value,
                      Complaints& complaints);

}  // namespace toolkit::quorvis
