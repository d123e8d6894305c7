#pragma once

#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/LeafSyntax.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// Parses the element of a leaf.
Leaf parseLeaf(const Element& element, const LeafRules& rules, const Settings& settings,
               Diagnostics& diagnostics);

// Parses the value of an attribute that may contain variables.
Template parseTemplate(const Element& element, std::string_view attribute, std::string_view value,
                       Diagnostics& diagnostics);

}  // namespace toolkit::quorvis
