#include "core/Paths.h"

#include <algorithm>

namespace zav {

void collapseSlashes(std::wstring& path) {
    const auto bothSlashes = [](wchar_t a, wchar_t b) { return a == L'/' && b == L'/'; };
    path.erase(std::unique(path.begin(), path.end(), bothSlashes), path.end());
}

}  // namespace zav
