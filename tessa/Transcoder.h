#pragma once

#include <iconv.h>

#include <cstddef>
#include <vector>

#include "tessa/InputFile.h"

namespace tessa {

// Reads a file in an encoding that the system knows, as UTF-8. The file goes through one conversion from end to
// end, so that an encoding may hold characters back, shift between sets of characters, or use as many bytes for
// one as it likes.
class Transcoder {
  public:
    // Throws Fault when the system does not know the encoding, std::bad_alloc when memory runs out.
    explicit Transcoder(const char* encoding);
    ~Transcoder();
    Transcoder(const Transcoder&) = delete;
    Transcoder& operator=(const Transcoder&) = delete;

    // At most `size` bytes of UTF-8, 0 at the end, made of blocks of `size` bytes of the file. Bytes that are no
    // text in this encoding come out as one that no UTF-8 has, and nothing follows it, so that the parser refuses it
    // with its line. Throws Fault like InputFile.
    int read(InputFile& file, char* buffer, int size);

  private:
    void fill(InputFile& file, std::size_t blockSize);
    void convert();
    void finish();
    void endWithBadByte();

    iconv_t converter_;
    std::vector<char> bytes_;  // of the file, not converted yet
    std::vector<char> text_;   // converted: from textBegin_ to textEnd_ not handed out yet
    std::size_t textBegin_ = 0;
    std::size_t textEnd_ = 0;
    bool starved_ = true;  // what is left of bytes_ is the beginning of a character, if anything
    bool ended_ = false;
};

}  // namespace tessa
