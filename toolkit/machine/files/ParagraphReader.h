#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/InputFile.h"
#include "toolkit/machine/text/Budget.h"

namespace toolkit {

// Reads a text file whose paragraphs are parted by blank lines, a few whole paragraphs at a time. Memory does not grow
// with the file; a paragraph that is longer than any real one is passed over.
class ParagraphReader {
  public:
    ParagraphReader(const Root& root, const std::string& path, Budget& budget);

    InputFile::State state() const { return file_.state(); }

    // The next paragraphs, valid until the next call. Empty when there are no more, or no more may be read.
    std::string_view next();

    // Whether all of it was handed out, and ended with a line.
    bool whole() const { return damagedAt_ == kNowhere; }
    // Where the first part begins that was not; that of a line that was cut off is the file's end.
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
    std::size_t begin_ = 0;  // of what is in the buffer and was not handed out
    std::size_t end_ = 0;
    std::size_t searched_ = 0;  // from the beginning, for the end of a paragraph
    std::uint64_t read_ = 0;    // of the file
    bool passing_ = false;      // within a paragraph that is too long
    std::uint64_t damagedAt_ = kNowhere;
};

}  // namespace toolkit
