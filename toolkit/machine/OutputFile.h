#pragma once

#include <span>
#include <string>
#include <string_view>

namespace toolkit {

// Makes `content` the content of the file at `path`, wholly or, on failure, not at all: a file that was there
// stays as it was until the new one is safe on its disk. What is no regular file, such as a pipe or a
// terminal, is written to. Throws std::system_error that names the path.
void writeOutputFile(const std::string& path, std::string_view content);
// The same with content in pieces that follow each other.
void writeOutputFile(const std::string& path, std::span<const std::string_view> content);

}  // namespace toolkit
