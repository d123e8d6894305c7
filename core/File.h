#pragma once

#include <cstdio>
#include <memory>

namespace zav {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// A stream that is closed with its owner.
using File = std::unique_ptr<std::FILE, CloseFile>;

// A file whose descriptor lies above 2, in a host without standard streams too; null with errno when it cannot
// be opened. Throws std::bad_alloc when memory is what is missing. REQUIRES: the mode has an "e", for
// close-on-exec.
File openFile(const char* path, const char* mode);
// For reading, where a pipe, which would have to be waited for, cannot be opened.
File openForReading(const char* path);
// As openFile, null also when memory is missing.
File openFileOrNull(const char* path, const char* mode);

// Closes a file that was written. False when what the stream still held could not be written: a full disk may
// show only now. REQUIRES: file is not null.
bool closeFile(File file);

}  // namespace zav
