#pragma once

#include <iconv.h>

#include <cstddef>
#include <vector>

#include "tessa/DocumentFile.h"

namespace tessa {

// Converts a file from any encoding that iconv supports to UTF-8. The file is one continuous conversion, so encodings may
// be stateful, delay output, and use any number of bytes per character.
class Transcoder {
  public:
    // Throws Fault if iconv does not support the encoding, and std::bad_alloc.
    explicit Transcoder(const char* encoding);
    ~Transcoder();
    Transcoder(const Transcoder&) = delete;
    Transcoder& operator=(const Transcoder&) = delete;

    // Returns up to `size` bytes of UTF-8, 0 at the end. Reads the file in blocks of `size` bytes. Invalid input yields
    // one byte that is invalid in UTF-8 and then the end, so that the parser reports the line. Throws Fault like
    // DocumentFile.
    int read(DocumentFile& file, char* buffer, int size);

  private:
    void fill(DocumentFile& file, std::size_t blockSize);
    void convert();
    void finish();
    void endWithBadByte();

    iconv_t converter_;
    std::vector<char> bytes_;  // input that is not converted yet
    std::vector<char> text_;   // output; textBegin_ to textEnd_ is not returned yet
    std::size_t textBegin_ = 0;
    std::size_t textEnd_ = 0;
    bool starved_ = true;  // bytes_ holds at most an incomplete character
    bool ended_ = false;
};

}  // namespace tessa
