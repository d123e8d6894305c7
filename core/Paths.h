#pragma once

#include <string>

namespace zav {

// Replaces every run of slashes by one slash. A slash at the end stays.
void collapseSlashes(std::wstring& path);

}  // namespace zav
