#pragma once

#include <functional>
#include <string>

#include "core/StdioFile.h"

namespace zav {

// Writes the content of a file. False when a write failed.
using WriteContent = std::function<bool(std::FILE*)>;

enum class WriteResult { kComplete, kNotCreated, kFailed };

// Creates a file for a scanner that only its owner can read and write. A file that already exists, which another user
// must have created, is overwritten unless it is a link or a pipe. Failed writes raise no signal. Stores the reason of a
// failure in `failure` unless that already holds an earlier one. Throws std::bad_alloc and what `writeContent` throws.
WriteResult writeNewFile(const std::wstring& path, const WriteContent& writeContent, std::string& failure);

}  // namespace zav
