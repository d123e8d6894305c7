#pragma once

#include "toolkit/quorvis/language/Complaints.h"
#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/Signature.h"

namespace toolkit::quorvis {

// Complains of identifiers of leaves that stand twice where that is not allowed, and warns of variables that no leaf
// gives a value. `element` is that of the signature.
void checkNames(const Signature& signature, const Element& element, Complaints& complaints);

}  // namespace toolkit::quorvis
