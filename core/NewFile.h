#pragma once

#include <functional>
#include <string>

#include "core/File.h"

namespace zav {

// What writes a file: false when not all was taken.
using Writing = std::function<bool(std::FILE*)>;

enum class Written { kWhole, kNotMade, kFailed };

// Writes a file for a scanner. It is for the owner alone, and a new one: what is there already, which only a
// stranger can have put there, is written to unless it is a link or a pipe. Failing writes raise no signal. Why
// it failed goes to `trouble`, unless the cause of that stands there already. Throws std::bad_alloc, and what `writing` throws.
Written writeNewFile(const std::wstring& path, const Writing& writing, std::string& trouble);

}  // namespace zav
