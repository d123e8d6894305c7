#pragma once

#include <string>

#include "tests/support/ScratchDir.h"

namespace zavtest {

// A toolkit's directory with a scanner that the test chooses.
class Toolkit {
  public:
    // `scanner` is the scanner's file name. `programs` is the directory of the programs that can take its place, each
    // in a directory of its own. `name` is the name of the toolkit's directory.
    Toolkit(std::string scanner, std::string programs, const std::string& name);

    // Puts one of the programs in the scanner's place.
    void scannerIs(const std::string& program) const;
    // Puts a file beside the scanner. Each program says which files it reads.
    std::filesystem::path put(const std::string& name, const std::string& content) const;
    void remove(const std::string& name) const { std::filesystem::remove(path_ / name); }
    // The content of a file beside the scanner.
    std::string read(const std::string& name) const { return readAll(path_ / name); }

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path scanner() const { return path_ / scanner_; }

  private:
    std::string scanner_;
    std::filesystem::path programs_;
    ScratchDir directory_;
    std::filesystem::path path_;
};

}  // namespace zavtest
