#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// An item that a signature matched. Empty fields are not written.
struct Evidence {
    std::string kind;    // "package"
    std::string source;  // the file that it was read from
    std::string name;
    std::string version;
};

// A signature that matched, with its output.
struct Match {
    std::string_view guid;
    std::string name;
    std::string_view metadata;  // XML in ASCII
    std::vector<Evidence> evidence;
    std::vector<std::pair<std::string, std::string>> variables;  // name and value
};

// Receives the results of an evaluation as soon as they are known.
class EvaluationSink {
  public:
    virtual ~EvaluationSink() = default;
    // The evaluation of the signature with this index begins.
    virtual void onBegin(std::size_t /*index*/, std::string_view /*guid*/) {}
    // The evaluation of a Detection of this signature begins. `last`: no other one follows.
    virtual void onDetection(std::size_t /*index*/, bool /*last*/) {}
    virtual void onMatch(const Match& match) = 0;
    virtual void onEvent(Event event) = 0;
    // A line for --explain: the outcome of a condition.
    virtual void onExplanation(std::string line) = 0;
};

}  // namespace toolkit::quorvis
