#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace toolkit {

// Makes `content` the content of the file at `path`, wholly or, on failure, not at all: a file that was there
// stays as it was until the new one is safe on its disk. What is no regular file, such as a pipe or a
// terminal, is written to. Throws std::system_error that names the path.
void writeOutputFile(const std::string& path, std::string_view content);

// Takes pieces of text that follow each other.
using TextSink = std::function<void(std::string_view piece)>;
// The same with the content that `write` gives to its sink. What `write` throws is a failure too.
void writeOutputFile(const std::string& path, const std::function<void(const TextSink& sink)>& write);

// Does so for a file that is nobody else's business: its mode is 0600, and a link or a pipe in its place is replaced.
void writePrivateFile(const std::string& path, const std::function<void(const TextSink& sink)>& write);

}  // namespace toolkit
