#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "toolkit/quorvis/language/Variables.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"

namespace toolkit::quorvis {

// Answers to leaves. Leaves that ask the same, of whatever signatures, are looked up once.
class LeafCache {
  public:
    explicit LeafCache(EvaluationContext& context) : context_(context) {}

    // These signatures' leaves will be asked for. REQUIRES: they are all that a file holds.
    void expect(std::span<const Signature> signatures);

    // The leaf with its variables replaced; none when one has no value, whose name is then in `missing`.
    static std::optional<Query> query(const Leaf& leaf, const Scope& scope, std::string_view& missing);

    // Lives as long as this. REQUIRES: the query's leaf does too.
    const LeafResult& result(const Query& query);
    // Whether results have filled the memory that is meant for them.
    bool holdTooMuch() const;
    // Forgets all results. REQUIRES: nobody uses one any more.
    void forget();
    // The result of this very leaf if it was looked up before and has no variables; else null.
    const LeafResult* known(const Leaf& leaf) const;

  private:
    struct Hash {
        std::size_t operator()(const Query& query) const { return query.hash(); }
    };

    const LeafResult* keep(LeafResult result);

    EvaluationContext& context_;
    std::unordered_map<Query, const LeafResult*, Hash> results_;
    std::deque<LeafResult> kept_;
    const LeafResult nothing_;              // what most leaves find
    std::uint64_t held_ = 0;                // bytes of kept_ and of the queries, about
    std::vector<const LeafResult*> known_;  // by the numbers of expected leaves without variables
};

// How the number of items that passed decides.
Truth truthOf(const Leaf& leaf, const LeafResult& result);

}  // namespace toolkit::quorvis
