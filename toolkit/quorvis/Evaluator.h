#pragma once

#include <string>
#include <vector>

#include "toolkit/quorvis/EventList.h"
#include "toolkit/quorvis/Leaves.h"
#include "toolkit/quorvis/Match.h"

namespace toolkit::quorvis {

// Decides which signatures match.
class Evaluator {
  public:
    // REQUIRES: all outlive the evaluator, and the signatures the matches.
    Evaluator(const Presets& presets, Machine& machine, EventList& events)
        : presets_(presets), machine_(machine), events_(events), leaves_(machine) {}

    // The matches in the order of the signatures, then of the items.
    std::vector<Match> evaluate(const std::vector<Signature>& signatures);

    // How a signature with this identifier came out, for people: a line for each of its conditions.
    void explain(std::string guid) { explained_ = std::move(guid); }
    const std::vector<std::string>& explanation() const { return explanation_; }

  private:
    const Presets& presets_;
    Machine& machine_;
    EventList& events_;
    Leaves leaves_;
    std::string explained_;
    std::vector<std::string> explanation_;
};

}  // namespace toolkit::quorvis
