#pragma once

#include <string>

#include "tests/support/ScratchDir.h"

namespace hwtest {

// A toolkit's directory with a scanner of the test's choice.
class Toolkit {
  public:
    // The directory's name may be anything that a path may hold.
    explicit Toolkit(const std::string& name = "toolkit");

    // The scanner is one of the programs in scanners/.
    void scannerIs(const std::string& program) const;
    // The scanner writes this to its output file and ends well.
    void scannerWrites(const std::string& output) const;
    // Puts a file beside the scanner; the programs in scanners/ say what they look for.
    std::filesystem::path put(const std::string& name, const std::string& content) const;

    const std::filesystem::path& path() const { return path_; }
    std::filesystem::path scanner() const { return path_ / "quorvah"; }

  private:
    zavtest::ScratchDir directory_;
    std::filesystem::path path_;
};

}  // namespace hwtest
