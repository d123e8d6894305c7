#pragma once

#include <cstdio>
#include <memory>

namespace zav {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// Owns a stdio stream and closes it on destruction.
using StdioFile = std::unique_ptr<std::FILE, CloseFile>;

// Opens a file with a descriptor above 2, even in a host that has closed its standard streams. Null with errno on error.
// Throws std::bad_alloc when memory runs out. REQUIRES: `mode` contains "e", for close-on-exec.
StdioFile openFile(const char* path, const char* mode);
// Opens a file for reading. Fails for a named pipe, as opening one would block.
StdioFile openForReading(const char* path);
// Like openFile(), but also returns null when memory runs out.
StdioFile openFileOrNull(const char* path, const char* mode);

// Closes a written file. False when buffered data could not be written; a full disk may be detected only here.
// REQUIRES: file is not null.
bool closeFile(StdioFile file);

}  // namespace zav
