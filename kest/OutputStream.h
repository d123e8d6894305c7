#pragma once

#include <string_view>

namespace kest {

// The bytes that a child process writes to its standard output, in order. Both operations take from the same
// stream: what one has delivered the other does not deliver again.
class OutputStream {
  public:
    virtual ~OutputStream() = default;

    // The next byte, 0 to 255, as soon as the child has written it; -1 at the end of the output, and from
    // then on.
    virtual int read() = 0;

    // All that has arrived and was not read yet: waits for at least one byte; empty at the end of the output,
    // and from then on. Valid until the next call of either operation, or until the stream dies.
    virtual std::string_view readSome() = 0;
};

}  // namespace kest
