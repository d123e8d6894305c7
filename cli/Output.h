#pragma once

#include <string>
#include <string_view>

namespace zavcli {

// A file that appears whole or not at all: it is written under another name beside its place and renamed.
// What is no regular file, such as a named pipe or /dev/stdout, is written to directly. All failures name the
// file.
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
    void openBeside(const std::string& target);
    [[noreturn]] void fail() const;

    std::string path_;       // as the user named it
    std::string target_;     // the same with symbolic links followed
    std::string temporary_;  // empty when the file is written directly
    int descriptor_ = -1;
};

// Throws Failure when standard output does not take all of the text.
void writeStandardOutput(std::string_view text);

}  // namespace zavcli
