// Makes files, and bytes, that their readers do not expect.
#pragma once

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>

#include "fuzz/hostile/Frame.h"

namespace hostile {

// The bytes cut short, overwritten, spliced, repeated, or with huge numbers in them; or as they are.
std::string mutated(Random& random, std::string bytes);
// Only some bytes at the end missing, or some characters changed.
std::string mutatedText(Random& random, std::string text);

// Removes what stands in the place of a file and makes the directories that lead there. False where that cannot be done,
// such as below a file that an earlier mutation left in a directory's place.
bool clear(const std::filesystem::path& file);
// A regular file of these bytes, in a cleared place. False where there is none.
bool write(const std::filesystem::path& file, const std::string& bytes);

// Puts something into the place of a file: such bytes, a pipe, a device, a directory, a link to nowhere, to itself, to a
// device or to `outside`, or a file of a huge size with nothing in it.
void plant(Random& random, const std::filesystem::path& file, const std::string& bytes,
           const std::filesystem::path& outside);

// Directories that are deep, full, loops, or named with any bytes.
void plantDirectories(Random& random, const std::filesystem::path& directory);

// While this lives a thread lets files grow and shrink, and swaps `directory` for a link to `outside` and back.
class Restless {
  public:
    Restless(std::filesystem::path directory, std::filesystem::path outside,
             std::vector<std::filesystem::path> files);
    ~Restless();
    Restless(const Restless&) = delete;
    Restless& operator=(const Restless&) = delete;

  private:
    void swapDirectory() const;
    void resizeFiles(unsigned round) const;

    std::filesystem::path directory_;
    std::filesystem::path outside_;
    std::vector<std::filesystem::path> files_;
    std::atomic<bool> over_ = false;
    std::thread thread_;
};

}  // namespace hostile
