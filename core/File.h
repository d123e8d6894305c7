#pragma once

#include <cstdio>
#include <memory>

namespace zav {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};

// A stream that is closed with its owner.
using File = std::unique_ptr<std::FILE, CloseFile>;

// A file that is born close-on-exec; null when it cannot be opened. Throws std::bad_alloc when memory is what
// is missing.
File openFile(const char* path, const char* mode);

// Closes a file that was written. False when what the stream still held could not be written: a full disk may
// show only now. REQUIRES: file is not null.
bool closeFile(File file);

}  // namespace zav
