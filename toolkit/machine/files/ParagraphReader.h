#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/InputFile.h"
#include "toolkit/machine/text/Budget.h"

namespace toolkit {

// Reads a text file whose paragraphs are separated by blank lines, several whole paragraphs at a time. Memory does not grow
// with the file. A paragraph of more than 16 MiB is skipped.
class ParagraphReader {
  public:
    ParagraphReader(const Root& root, const std::string& path, Budget& budget);

    InputFile::State state() const { return file_.state(); }

    // The next paragraphs, valid until the next call. Empty at the end of the file and when the budget is spent.
    std::string_view next();

    // Whether the whole file was returned and its last line had a line end.
    bool whole() const { return damagedAt_ == kNowhere; }
    // The offset of the first part that was not returned. For a last line without a line end it is the end of the file.
    std::uint64_t damagedAt() const { return damagedAt_; }

  private:
    static constexpr std::uint64_t kNowhere = ~std::uint64_t{0};

    bool fill();
    std::size_t endOfParagraphs();
    std::string_view takeRest();
    void pass();
    void noteDamage(std::uint64_t at);

    InputFile file_;
    Budget& budget_;
    std::vector<char> buffer_;
    std::size_t begin_ = 0;  // of the part of the buffer that was not returned yet
    std::size_t end_ = 0;
    std::size_t searched_ = 0;  // bytes from begin_ that hold no end of a paragraph
    std::uint64_t read_ = 0;    // bytes of the file
    bool passing_ = false;      // within a paragraph that is too long
    std::uint64_t damagedAt_ = kNowhere;
};

}  // namespace toolkit
