#pragma once

#include <ostream>
#include <streambuf>
#include <string>

#include "tessa/Node.h"

namespace zav {

// Nodes as XML text. One object serves many nodes: a stream is dear to make.
class SWNodeText {
  public:
    SWNodeText();

    // The text that the node writes, each byte widened as a signed character. Throws std::bad_alloc.
    std::wstring of(const tessa::Node* node, int mode);

  private:
    // Keeps what is written to it.
    class Buffer : public std::streambuf {
      public:
        std::string bytes;

      protected:
        std::streamsize xsputn(const char* text, std::streamsize length) override;
        int_type overflow(int_type byte) override;
    };

    Buffer buffer_;
    std::ostream stream_;
};

}  // namespace zav
