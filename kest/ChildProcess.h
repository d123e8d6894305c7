#pragma once

#include "kest/OutputStream.h"

namespace kest {

// A child process, for use by the thread that started it. The destructor closes the child's output and waits for the
// child, so neither a descriptor nor a zombie is left.
class ChildProcess {
  public:
    virtual ~ChildProcess() = default;

    // Waits for the child and returns its exit status: 128 + n when signal n ended it, -1 when the status is not
    // available. A child whose output is not read may never end.
    virtual int exitValue() = 0;

    // The same as exitValue().
    virtual int waitFor() = 0;

    // The child's standard output, owned by the ChildProcess. The stream ends when the child has ended, even if
    // processes that the child started still have it open.
    virtual OutputStream* getOutputStream() = 0;
};

}  // namespace kest
