#include "core/File.h"

#include <cerrno>
#include <new>

namespace zav {

File openFile(const char* path, const char* mode) {
    errno = 0;
    File file(std::fopen(path, mode));
    if (file == nullptr && errno == ENOMEM) throw std::bad_alloc();
    return file;
}

bool closeFile(File file) {
    return std::fclose(file.release()) == 0;
}

}  // namespace zav
