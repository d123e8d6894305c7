// The note of a program or library about the package that it was built for.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace toolkit::quorvis {

// The fields that the note has, by the names of values of Elf: "noteName".
using PackageNote = std::vector<std::pair<std::string_view, std::string>>;

// `whole` is false if the text is not JSON. A note without a name has no fields.
PackageNote readPackageNote(std::string_view json, bool& whole);

}  // namespace toolkit::quorvis
