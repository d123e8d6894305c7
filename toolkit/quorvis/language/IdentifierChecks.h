#pragma once

#include "toolkit/quorvis/language/Diagnostics.h"
#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/Signature.h"

namespace toolkit::quorvis {

// Reports leaves that use the same identifier although both may be bound at the same time, and warns of variables that
// nothing in the signature sets. `element` is the element of the signature.
void checkIdentifiers(const Signature& signature, const Element& element, Diagnostics& diagnostics);

}  // namespace toolkit::quorvis
