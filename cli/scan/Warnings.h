#pragma once

#include <string>
#include <vector>

#include "cli/scan/Software.h"

namespace zavcli {

// Understands a warning as the library hands it out. One that is not XML is kept as text.
Warning readWarning(const std::string& xml);

// The warning in words, such as "warning: /etc/x: cannot be opened: permission denied (signature GUID, leaf
// f)".
std::string warningText(const Warning& warning);

// All warnings in words, one line for those that differ in the signature only: "warning: /opt/x: No permission to search this
// directory (30 signatures: A, B, C, ...)".
std::vector<std::string> warningLines(const std::vector<Warning>& warnings);

// The identifiers of the signatures of which the warnings say that it is unknown whether they match, each once.
std::vector<std::string> undecidedSignatures(const std::vector<Warning>& warnings);

// Whether the warnings tell that something was left out that concerns one of the signatures, or all when none is named.
bool tellOfGaps(const std::vector<Warning>& warnings, const std::vector<std::string>& guids);

// Whether they tell of such a gap that is not the rule: one that comes of more than files and directories which the scanner's
// user, or any user, may not look at. Where a signature is named, every gap of it counts.
bool tellOfUnusualGaps(const std::vector<Warning>& warnings, const std::vector<std::string>& guids);

}  // namespace zavcli
