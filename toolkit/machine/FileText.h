#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "toolkit/machine/Root.h"

namespace toolkit {

// The content of a large file of the tree, without a copy of it where that can be had. The file must not be
// cut short meanwhile: those who replace it by another one do no harm.
class FileText {
  public:
    FileText(const Root& root, const std::string& path);
    ~FileText();
    FileText(const FileText&) = delete;
    FileText& operator=(const FileText&) = delete;

    // Empty when the file is, or could not be read.
    std::string_view text() const { return mapping_ != nullptr ? std::string_view(mapping_, size_) : copy_; }

  private:
    const char* mapping_ = nullptr;
    std::size_t size_ = 0;
    std::string copy_;
};

}  // namespace toolkit
