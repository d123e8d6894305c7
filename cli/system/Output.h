#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>

namespace zavcli {

// A file that appears whole or not at all. What stood in its place is replaced by a new file, never written to and never
// followed: a link is replaced itself, and what is neither a file nor a link is refused. All failures name the file.
class OutputFile {
  public:
    // Makes sure that the file can be written, before any work is done for it. Throws Failure.
    explicit OutputFile(std::string path);
    // Removes what was not committed.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    // Writes the text and puts the file into its place. Throws Failure, and then an earlier file is as it
    // was.
    void commit(std::string_view text);

  private:
    void openDirectory();
    void judgeEarlier();
    void requireReplaceable() const;
    bool openUnnamed();
    void openNamed();
    void removeNamed();
    void fill(std::string_view text);
    bool giveName();
    [[noreturn]] void fail() const;
    [[noreturn]] void refuse(std::string_view reason) const;

    std::string path_;            // as the user named it
    std::string name_;            // its last part
    std::string temporary_;       // the name of the new file beside it; empty while it has none
    std::optional<mode_t> kept_;  // the permissions of the file that is replaced, where they count
    int directory_ = -1;          // that the name is in
    int descriptor_ = -1;         // of the new file
};

// Throws Failure when standard output does not take all of the text.
void writeStandardOutput(std::string_view text);

}  // namespace zavcli
