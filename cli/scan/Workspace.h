#pragma once

#include <string>

namespace zavcli {

// A directory for the temporary files of this process, the library's among them. It is removed with all that is in it
// at the end and when a signal ends the process. What was left by processes that were killed is removed when the next
// one is made. There is one at a time.
class Workspace {
  public:
    // Throws Failure when no directory can be made, or when others could rename what is in the temporary directory.
    Workspace();
    ~Workspace();
    Workspace(const Workspace&) = delete;
    Workspace& operator=(const Workspace&) = delete;

    const std::string& path() const { return path_; }

  private:
    // False when another name is to be tried.
    bool make(const std::string& lead);

    std::string path_;
    int lock_ = -1;  // the open directory; locked as long as its process lives
};

}  // namespace zavcli
