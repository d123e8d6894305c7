#pragma once

#include <memory_resource>

#include "toolkit/quorvis/language/Complaints.h"
#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/settings/Settings.h"

namespace toolkit::quorvis {

// The signature that an element of the signatures file describes; not to be used when there are problems. Its texts
// are those of the element, or lie in `texts`.
Signature readSignature(const Element& element, const Settings& settings, std::pmr::memory_resource& texts,
                        Complaints& complaints);

}  // namespace toolkit::quorvis
