#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "toolkit/quorvis/report/Event.h"
#include "toolkit/quorvis/report/Match.h"

namespace toolkit::quorvis {

// Is told what comes of an evaluation, as soon as it is known.
class EvaluationSink {
  public:
    virtual ~EvaluationSink() = default;
    // The signature with this index is evaluated from now on.
    virtual void onBegin(std::size_t /*index*/, std::string_view /*guid*/) {}
    virtual void onMatch(const Match& match) = 0;
    virtual void onEvent(Event event) = 0;
    // For people: how a condition came out.
    virtual void onExplanation(std::string line) = 0;
};

}  // namespace toolkit::quorvis
