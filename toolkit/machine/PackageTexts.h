#pragma once

#include <deque>
#include <initializer_list>
#include <memory_resource>
#include <string>
#include <string_view>

#include "toolkit/machine/FileText.h"
#include "toolkit/machine/Root.h"

namespace toolkit {

// Keeps the texts that packages are described with: they live as long as this does.
class PackageTexts {
  public:
    // The content of a file; empty when it could not be read.
    std::string_view read(const Root& root, const std::string& path) {
        return files_.emplace_back(root, path).text();
    }
    // A copy of these texts, one behind the other.
    std::string_view keep(std::initializer_list<std::string_view> texts);
    std::string_view keep(std::string_view text) { return keep({text}); }

  private:
    std::deque<FileText> files_;
    std::pmr::monotonic_buffer_resource copies_;
};

}  // namespace toolkit
