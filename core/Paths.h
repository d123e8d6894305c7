#pragma once

#include <string>

namespace zav {

// Every run of slashes becomes one slash. Nothing else changes: a slash at the end stays.
void collapseSlashes(std::wstring& path);

}  // namespace zav
