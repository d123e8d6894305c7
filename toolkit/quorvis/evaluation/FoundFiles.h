// Tells what is wrong with single files from what makes the evaluation as a whole doubtful.
#pragma once

#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// The files that the Each of a Detection finds. Each of them may be a result of its own, so a damaged one makes only
// that result doubtful.
class FoundFiles {
  public:
    FoundFiles(const Signature& signature, const Detection& detection)
        : signature_(signature), detection_(detection) {}

    // Whether only such a file can be the cause of an event with this code.
    bool areCauseOf(const Leaf& leaf, EventCode code) const;
    // Whether only such files can be the cause of a result that is incomplete.
    bool areCauseOf(const Leaf& leaf, const LeafResult& result) const;

  private:
    const Signature& signature_;
    const Detection& detection_;
};

}  // namespace toolkit::quorvis
