#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "toolkit/quorvis/evaluation/Installations.h"
#include "toolkit/quorvis/evaluation/OwningPackages.h"
#include "toolkit/quorvis/language/Signature.h"
#include "toolkit/quorvis/language/Variables.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/leaves/LeafCache.h"
#include "toolkit/quorvis/report/Documents.h"
#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// Receives the results of an evaluation as soon as they are known.
class EvaluationSink {
  public:
    virtual ~EvaluationSink() = default;
    // The evaluation of the signature with this index begins.
    virtual void onBegin(std::size_t /*index*/, std::string_view /*guid*/) {}
    // The evaluation of a Detection of this signature begins. `last`: no other one follows.
    virtual void onDetection(std::size_t /*index*/, bool /*last*/) {}
    // Of about `total` items, `done` have been evaluated.
    virtual void onProgress(std::size_t /*done*/, std::size_t /*total*/) {}
    // Another item has been evaluated.
    virtual void onItem() {}
    virtual void onMatch(const Match& match) = 0;
    virtual void onEvent(Event event) = 0;
    // A line for --explain: the outcome of a condition.
    virtual void onExplanation(std::string line) = 0;
};

// The evaluation of one signature.
class SignatureEvaluation {
  public:
    // `explained`: whether to explain the results of the conditions.
    SignatureEvaluation(const Signature& signature, const Presets& presets, LeafCache& leaves,
                        EvaluationContext& context, EvaluationSink& sink, bool explained)
        : signature_(signature),
          leaves_(leaves),
          context_(context),
          sink_(sink),
          explained_(explained),
          scope_(presets, signature),
          owners_(context) {}

    // Evaluates a Detection and reports its matches. `replayed`: they were reported before.
    void run(const Detection& detection, bool replayed);
    // A Detection could not be evaluated.
    void leaveOut(EventCode reason) {
        unknown_ = true;
        doubts_.add(reason);
    }
    // Reports whether the signature as a whole is unknown.
    void finish();

  private:
    // A leaf that was true, and the item that it found.
    struct Proof {
        const Leaf* leaf;
        const Item* item;
    };

    // What a leaf of Each found. It is in the cache, or here once the cache has been emptied.
    struct EachResult {
        const LeafResult* cached;
        LeafResult own;

        const LeafResult& get() const { return cached == nullptr ? own : *cached; }
    };

    // These return whether the Detection found something.
    Truth runOnce();
    // `level`: which leaf of Each is next. Behind the last one, it is the condition.
    Truth runEach(std::size_t level);
    Truth runItems(std::size_t level);
    // True when there is no condition.
    Truth evaluateMatch();
    Truth evaluate(const Condition& condition);
    Truth evaluateAll(const std::vector<Condition>& conditions);
    Truth evaluateAny(const std::vector<Condition>& conditions);
    Truth evaluateLeaf(const Leaf& leaf);
    // Null when a variable of the leaf has no value, which is reported.
    const LeafResult* lookUp(const Leaf& leaf);
    void forgetLeaves();
    // Forgets the bindings and proofs of all items.
    void clear();
    // The item that is bound: a copy if it has to outlive the cache, or needs further values.
    const Item& use(const Leaf& leaf, const Item& item, bool copied = false);

    bool restsOnPackagesOfEarlierMatches();
    // Whether an earlier match is of the same installation.
    bool isInstalledTwice(const Match& match);
    void noteFiles();
    void reportOwnerEvents();
    static std::vector<Evidence> evidenceOf(const std::vector<Proof>& proofs);

    void addMatch();
    void addVariable(const OutputVariable& variable, Match& match);
    void addIdentity(const Identity& identity, Match& match);

    // Whether the result is incomplete only because of files that Each found.
    bool isOfFiles(const Leaf& leaf, const LeafResult& result) const;
    void noteUnknown(bool onlyFiles);
    // The leaf makes the current item unknown. Null: a variable of it has no value.
    void noteDoubt(const LeafResult* result);
    void reportUnresolved(std::string text, bool ofFile);
    void reportEvents(const Leaf& leaf, const LeafResult& result);
    void report(EventCode code, std::string text, std::string_view leaf = {}, bool ofFile = false);
    void explain(std::string text);
    void explain(std::string text, Truth truth);

    const Signature& signature_;
    const Detection* detection_ = nullptr;  // the current one
    LeafCache& leaves_;
    EvaluationContext& context_;
    EvaluationSink& sink_;
    bool explained_;
    bool replayed_ = false;
    bool unknown_ = false;
    bool unknownFiles_ = false;     // items of Each are unknown because of what is wrong with their files
    bool onlyFilesUnknown_ = true;  // of the current item: nothing else makes it unknown
    EventCodes doubt_;              // of the current item: what makes leaves unknown
    EventCodes doubts_;             // what makes the signature unknown
    unsigned depth_ = 0;            // of the current condition
    Scope scope_;
    std::vector<Proof> proofs_;
    std::vector<EachResult> eachResults_;      // of the leaves of Each whose items are being combined
    std::deque<Item> copies_;                  // of bound items
    bool findsPackagesToo_ = false;            // whether another Detection may find packages
    OwningPackages owners_;                    // remembers those of earlier matches if so
    std::vector<const LeafResult*> reported_;  // whose events have been reported
    std::unordered_set<std::string> outputs_;  // of the matches so far
    Installations installations_;              // likewise, of a signature that matches each once
};

}  // namespace toolkit::quorvis
