#pragma once

#include <string>

namespace zavcli {

// The directory for temporary files, chosen as the library does: the value of TEMP, else of TMP, else /tmp.
std::string temporaryDirectory();

// A directory for the temporary files of this process and of the library. It is removed with its content by
// the destructor, or by a signal that ends the process. Making one removes the directories that killed
// processes left behind. There is one at a time.
class Workspace {
  public:
    // Throws Failure if no directory can be made, or if other users could rename files in the temporary directory.
    Workspace();
    ~Workspace();
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    const std::string& path() const { return path_; }

  private:
    // Returns false if another name must be tried.
    bool make(const std::string& lead);

    std::string path_;
    int lock_ = -1;  // the open directory, locked as long as this process lives
};

}  // namespace zavcli
