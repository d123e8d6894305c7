#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace zavcli {

// A file that appears complete or not at all. It replaces what has its name: an earlier file is not written
// to, and a link is not followed. Pipes, sockets, devices and directories are refused. Every failure names
// the file.
class OutputFile {
  public:
    // Who may read the file: whom the umask and an earlier file allow to, or its owner only.
    enum class Access { Usual, Owner };

    // Checks that the file can be written, before any work is done for it. Throws Failure.
    explicit OutputFile(std::string path, Access access = Access::Usual);
    // Removes what was not committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Writes the text and gives the file its name. Throws Failure; an earlier file is then unchanged.
    void commit(std::string_view text);

  private:
    void openDirectory();
    void checkEarlierFile();
    void requireReplaceableLink() const;
    bool openUnnamed();
    void openTemporary();
    void removeTemporary();
    void writeContent(std::string_view text);
    bool linkTemporary();
    [[noreturn]] void fail() const;
    [[noreturn]] void refuse(std::string_view reason) const;

    std::string path_;  // as the user gave it
    std::string name_;  // the last component of the path
    std::string
        temporary_;  // the temporary name of the new file in the same directory; empty while it has none
    std::optional<mode_t> mode_;  // the permissions of the file; nothing for those of a new file
    int directory_ = -1;          // the directory of the file
    int descriptor_ = -1;         // the new file
};

}  // namespace zavcli
