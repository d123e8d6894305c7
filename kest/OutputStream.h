#pragma once

namespace kest {

// The bytes that a child process writes to its standard output, in order.
class OutputStream {
  public:
    virtual ~OutputStream() = default;

    // The next byte, 0 to 255, as soon as the child has written it; -1 at the end of the output, and from then on.
    virtual int read() = 0;
};

}  // namespace kest
