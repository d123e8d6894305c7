// File systems that cannot do what newer ones can. Link with --wrap=openat and --wrap=linkat.
#pragma once

namespace zavtest {

// While it lives, there are no files without a name.
class OldFileSystem {
  public:
    OldFileSystem();
    ~OldFileSystem();
    OldFileSystem(const OldFileSystem&) = delete;
    OldFileSystem& operator=(const OldFileSystem&) = delete;
};

// While it lives, files without a name cannot be given one.
class FilesStayUnnamed {
  public:
    FilesStayUnnamed();
    ~FilesStayUnnamed();
    FilesStayUnnamed(const FilesStayUnnamed&) = delete;
    FilesStayUnnamed& operator=(const FilesStayUnnamed&) = delete;
};

}  // namespace zavtest
