#pragma once

#include "kest/OutputStream.h"

namespace kest {

// A started child, for the thread that launched it. Destroying it closes its output and waits for its end: no
// descriptor and no zombie stays behind.
class ChildProcess {
  public:
    virtual ~ChildProcess() = default;

    // The exit status of the child, 128 + n when signal n ended it, -1 when the status is not to be had. Waits for
    // the child's end, which may never come while there is output that nobody reads.
    virtual int exitValue() = 0;

    // Waits for the child's end; the same value as exitValue().
    virtual int waitFor() = 0;

    // The child's standard output; belongs to the ChildProcess. It ends when the child has ended, though processes
    // that the child left behind may still have it open.
    virtual OutputStream* getOutputStream() = 0;
};

}  // namespace kest
