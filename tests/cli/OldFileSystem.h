// Simulates file systems with fewer features. Link with --wrap=openat and --wrap=linkat.
#pragma once

namespace zavtest {

// During its lifetime, unnamed files are not supported.
class OldFileSystem {
  public:
    OldFileSystem();
    ~OldFileSystem();
    OldFileSystem(const OldFileSystem&) = delete;
    OldFileSystem& operator=(const OldFileSystem&) = delete;
};

// During its lifetime, unnamed files cannot be linked under a name.
class FilesStayUnnamed {
  public:
    FilesStayUnnamed();
    ~FilesStayUnnamed();
    FilesStayUnnamed(const FilesStayUnnamed&) = delete;
    FilesStayUnnamed& operator=(const FilesStayUnnamed&) = delete;
};

}  // namespace zavtest
