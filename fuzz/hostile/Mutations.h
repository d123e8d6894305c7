// Creates files that their readers do not expect.
#pragma once

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "fuzz/hostile/Harness.h"

namespace hostile {

// The bytes, possibly truncated, overwritten, spliced, repeated, or with huge numbers inserted.
std::string mutated(Random& random, std::string bytes);
// The text, possibly truncated or with some characters changed.
std::string mutatedText(Random& random, std::string text);

// Removes whatever exists at the path of a file and creates the parent directories. Returns false if that is impossible,
// for example because an earlier mutation replaced a directory by a file.
bool clear(const std::filesystem::path& file);
// Clears the path and writes a regular file. Returns false if the path cannot be cleared.
bool write(const std::filesystem::path& file, const std::string& bytes);

// Creates one of these at the path of a file: a file with these bytes, mutated; a pipe; a device; a directory; a link to
// itself, to a device or to `outside`; a huge sparse file.
void putHostile(Random& random, const std::filesystem::path& file, const std::string& bytes,
                const std::filesystem::path& outside);

// Creates deep directories, large ones, loops of links, and names of arbitrary bytes.
void addOddDirectories(Random& random, const std::filesystem::path& directory);

// A thread that repeatedly resizes files and replaces `directory` by a link to `outside` and back, until destruction.
class ChangingFiles {
  public:
    ChangingFiles(std::filesystem::path directory, std::filesystem::path outside,
                  std::vector<std::filesystem::path> files);
    ~ChangingFiles();
    ChangingFiles(const ChangingFiles&) = delete;
    ChangingFiles& operator=(const ChangingFiles&) = delete;

  private:
    void swapDirectory() const;
    void resizeFiles(unsigned round) const;

    std::filesystem::path directory_;
    std::filesystem::path outside_;
    std::vector<std::filesystem::path> files_;
    std::atomic<bool> stopped_ = false;
    std::thread thread_;
};

}  // namespace hostile
