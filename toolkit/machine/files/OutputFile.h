#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace toolkit {

// Receives the content in consecutive pieces.
using TextSink = std::function<void(std::string_view piece)>;

// Atomically replaces the file at `path` by a new file with this content. On failure an existing file is unchanged. The new
// file belongs to the caller and has mode 0600, independent of the umask and of the old file. A link is replaced, not
// followed. A directory, a pipe or a device is refused. If the file system supports files without names, a process that is
// killed while it writes leaves nothing behind. Throws std::exception with a message that names the path.
void writeOutputFile(const std::string& path, std::string_view content);
// The same, with the content that `write` passes to its sink. An exception of `write` is a failure too.
void writeOutputFile(const std::string& path, const std::function<void(const TextSink& sink)>& write);

}  // namespace toolkit
