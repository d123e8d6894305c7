#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace toolkit {

// Takes pieces of text that follow each other.
using TextSink = std::function<void(std::string_view piece)>;

// Makes `content` the content of the file at `path`, wholly or, on failure, not at all: a file that was there
// stays as it was until the new one is safe on its disk. The file is a new one of the caller, with mode 0600
// whatever the umask, whatever stood there. A link in its place is replaced, not followed; a directory, a pipe
// or a device is refused. Where the file system has files without names, a process that is killed while it
// writes leaves nothing. Throws std::exception with a text that names the path.
void writeOutputFile(const std::string& path, std::string_view content);
// The same with the content that `write` gives to its sink. What `write` throws is a failure too.
void writeOutputFile(const std::string& path, const std::function<void(const TextSink& sink)>& write);

}  // namespace toolkit
