#pragma once

#include <ostream>
#include <streambuf>
#include <string>

#include "tessa/Node.h"

namespace zav {

// Converts nodes to XML text. Use one object for many nodes, as making a stream is expensive.
class SWNodeText {
  public:
    SWNodeText();

    // The text of a node, each byte widened as a signed character. Throws std::bad_alloc.
    std::wstring of(const tessa::Node* node, int mode);

  private:
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
