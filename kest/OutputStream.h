#pragma once

#include <string_view>

namespace kest {

// The standard output of a child process. Both operations consume the same stream: each byte is delivered once.
class OutputStream {
  public:
    virtual ~OutputStream() = default;

    // The next byte, 0 to 255, as soon as the child has written it; -1 at the end of the output and after it.
    virtual int read() = 0;

    // Waits for at least one byte and returns all bytes that have arrived; empty at the end of the output and after
    // it. The bytes are valid until the next operation or the end of the stream's lifetime.
    virtual std::string_view readSome() = 0;
};

}  // namespace kest
