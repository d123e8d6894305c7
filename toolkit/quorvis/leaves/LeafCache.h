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

// The results of leaves. Leaves with equal queries are looked up once for all signatures.
class LeafCache {
  public:
    explicit LeafCache(EvaluationContext& context) : context_(context) {}

    // Prepares for the leaves of these signatures. REQUIRES: they are all signatures of a file.
    void expect(std::span<const Signature> signatures);

    // The leaf with its variables replaced. None when a variable has no value; `missing` is its name.
    static std::optional<Query> query(const Leaf& leaf, const Scope& scope, std::string_view& missing);

    // The result of a query, looked up unless it is known. Valid until forget(). REQUIRES: the query's leaf lives as long.
    const LeafResult& result(const Query& query);
    // Whether the results take more memory than they should.
    bool isFull() const;
    // Deletes all results. REQUIRES: none is in use.
    void forget();
    // The result of this leaf if it has no variables and was looked up before; else null.
    const LeafResult* known(const Leaf& leaf) const;

  private:
    struct Hash {
        std::size_t operator()(const Query& query) const { return query.hash(); }
    };

    const LeafResult* keep(LeafResult result);

    EvaluationContext& context_;
    std::unordered_map<Query, const LeafResult*, Hash> results_;
    std::deque<LeafResult> kept_;
    const LeafResult nothing_;              // shared by all leaves that found nothing
    std::uint64_t held_ = 0;                // approximate bytes of kept_ and of the queries
    std::vector<const LeafResult*> known_;  // by number of leaf: of leaves without variables
};

// Whether the number of items is within the limits of the leaf.
Truth truthOf(const Leaf& leaf, const LeafResult& result);

}  // namespace toolkit::quorvis
