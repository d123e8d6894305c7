#pragma once

#include <string>
#include <unordered_set>
#include <vector>

#include "toolkit/quorvis/leaves/LeafCache.h"
#include "toolkit/quorvis/report/EvaluationSink.h"

namespace toolkit::quorvis {

// The evaluation of one signature.
class SignatureEvaluation {
  public:
    // `explained` when somebody wants to read how it went.
    SignatureEvaluation(const Signature& signature, const Presets& presets, LeafCache& leaves,
                        const Settings& settings, EvaluationSink& sink, bool explained)
        : signature_(signature),
          leaves_(leaves),
          settings_(settings),
          sink_(sink),
          explained_(explained),
          scope_(presets, signature) {}

    void run();

  private:
    void runEach(const Leaf& each);
    // True when the condition holds, or there is none.
    Truth evaluateMatch();
    Truth evaluate(const Condition& condition);
    Truth evaluateAll(const std::vector<Condition>& conditions);
    Truth evaluateAny(const std::vector<Condition>& conditions);
    Truth evaluateLeaf(const Leaf& leaf);
    // Null, after an event, when a variable of the leaf has no value.
    const LeafResult* lookUp(const Leaf& leaf);
    void use(const Leaf& leaf, const Item& item);

    void addMatch();
    void addVariable(const OutputVariable& variable, Match& match);

    void tell(const Leaf& leaf, const LeafResult& result);
    void report(EventCode code, std::string text, std::string_view leaf = {});
    void explain(std::string text, Truth truth);

    const Signature& signature_;
    LeafCache& leaves_;
    const Settings& settings_;
    EvaluationSink& sink_;
    bool explained_;
    unsigned depth_ = 0;  // of the condition that is evaluated
    Scope scope_;
    std::vector<Evidence> evidence_;
    std::vector<const LeafResult*> told_;
    std::unordered_set<std::string> distinct_;  // the matches of this signature by their output
};

}  // namespace toolkit::quorvis
