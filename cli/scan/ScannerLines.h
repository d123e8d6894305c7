#pragma once

#include <string>
#include <vector>

#include "cli/scan/Library.h"

namespace zavcli {

// Keeps the lines that the software scanner prints, and hands every message on.
class ScannerLines : public Listener {
  public:
    // REQUIRES: `also` outlives it.
    explicit ScannerLines(Listener& also) : also_(also) {}

    void hear(const Message& message) noexcept override;

    // The first lines since the last clear().
    const std::vector<std::string>& lines() const { return lines_; }
    void clear() { lines_.clear(); }

  private:
    Listener& also_;
    std::vector<std::string> lines_;
};

}  // namespace zavcli
