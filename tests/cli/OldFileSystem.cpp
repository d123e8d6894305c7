#include "tests/cli/OldFileSystem.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

// The symbols that the linker option --wrap uses. The mode is passed on even if it is not needed.
extern "C" {
int zavtestOpenAt(int directory, const char* path, int flags, mode_t mode) __asm__("__wrap_openat");
int zavtestOpenAtReally(int directory, const char* path, int flags, mode_t mode) __asm__("__real_openat");
int zavtestLinkAt(int from, const char* file, int to, const char* name, int flags) __asm__("__wrap_linkat");
int zavtestLinkAtReally(int from, const char* file, int to, const char* name,
                        int flags) __asm__("__real_linkat");
}

namespace {

bool noUnnamedFiles = false;
bool noNaming = false;

}  // namespace

int zavtestOpenAt(int directory, const char* path, int flags, mode_t mode) {
    if (!noUnnamedFiles || (flags & O_TMPFILE) != O_TMPFILE)
        return zavtestOpenAtReally(directory, path, flags, mode);
    errno = EOPNOTSUPP;
    return -1;
}

int zavtestLinkAt(int from, const char* file, int to, const char* name, int flags) {
    if (!noNaming) return zavtestLinkAtReally(from, file, to, name, flags);
    errno = ENOENT;
    return -1;
}

namespace zavtest {

OldFileSystem::OldFileSystem() {
    noUnnamedFiles = true;
}

OldFileSystem::~OldFileSystem() {
    noUnnamedFiles = false;
}

FilesStayUnnamed::FilesStayUnnamed() {
    noNaming = true;
}

FilesStayUnnamed::~FilesStayUnnamed() {
    noNaming = false;
}

}  // namespace zavtest
