#pragma once

#include "kest/OutputStream.h"

namespace kest {

// A started child, for one thread at a time. Destroying it closes its output and waits for its end: no
// descriptor and no zombie stays behind.
class ChildProcess {
  public:
    virtual ~ChildProcess() = default;

    // The exit status of the child, 128 + n when signal n ended it, -1 when the system gave the status to
    // somebody else. Waits for the child's end, which may never come while there is output that nobody reads.
    virtual int exitValue() = 0;

    // Waits for the child's end; the same value as exitValue().
    virtual int waitFor() = 0;

    // The child's standard output; belongs to the ChildProcess.
    virtual OutputStream* getOutputStream() = 0;
};

}  // namespace kest
