// Reads the warnings of the software scanner and decides what they mean for the results.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// Parses a warning as the library returns it. A warning that is not XML becomes the text.
Warning readWarning(const std::string& xml);

// The warning in words, such as "warning: /etc/x: cannot be opened (signature GUID, leaf f)".
std::string warningText(const Warning& warning);

// All warnings in words. Those that differ only in the signature share a line, such as
// "warning: /opt/x: No permission to search this directory (30 signatures: A, B, C, ...)".
enum class Naming : std::uint8_t { FirstSignatures, AllUndecided };
std::vector<std::string> warningLines(const std::vector<Warning>& warnings,
                                      Naming naming = Naming::FirstSignatures);

// The same, in few lines. More than three places that users may not search or read share a line with the number of
// signatures that are undecided because of them; `isRoot` tells whether the user may become no more. Of many files that
// could not be read or understood, three are named and the others counted. `option` is the one of the command that shows
// all lines.
std::vector<std::string> conciseWarningLines(const std::vector<Warning>& warnings, std::string_view option,
                                             bool isRoot);

// Whether the warning says that a signature is undecided.
bool isUnresolved(const Warning& warning);

// A signature that is undecided, and the codes of the warnings that tell why, separated by blanks.
struct Undecided {
    std::string guid;
    std::string because;  // empty if the scanner does not tell
};
// The signatures of which it is unknown whether they match, each once.
std::vector<Undecided> undecidedSignatures(const std::vector<Warning>& warnings);

// Whether the warnings report that a result of one of the signatures may be missing, or any result if `guids`
// is empty.
bool hasGaps(const std::vector<Warning>& warnings, const std::vector<std::string>& guids);

// The same for gaps that must be reported by the exit status. Without `guids`, a gap does not count if its only cause
// is a file or directory that the user of the scanner, or every user, may not read, or if it only concerns single
// files, which are damaged or too large.
bool hasUnexpectedGaps(const std::vector<Warning>& warnings, const std::vector<std::string>& guids);

}  // namespace zavcli
