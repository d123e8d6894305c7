#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "toolkit/quorvis/Leaf.h"
#include "toolkit/quorvis/Machine.h"
#include "toolkit/quorvis/Variables.h"

namespace toolkit::quorvis {

// Answers to leaves. Leaves that ask the same, of whatever signatures, are looked up once.
class Leaves {
  public:
    explicit Leaves(Machine& machine) : machine_(machine) {}

    // The leaf with its variables replaced; none when one has no value, whose name is then in `missing`.
    static std::optional<Query> query(const Leaf& leaf, const Scope& scope, std::string_view& missing);

    // Lives as long as this.
    const LeafResult& result(const Query& query);
    // The result of this very leaf if it was looked up before and has no variables; else null.
    const LeafResult* known(const Leaf& leaf) const;

  private:
    Machine& machine_;
    std::unordered_map<std::string, std::unique_ptr<const LeafResult>> results_;
    std::unordered_map<const Leaf*, const LeafResult*> known_;
};

// How the number of items that passed decides.
Truth truthOf(const Leaf& leaf, const LeafResult& result);

}  // namespace toolkit::quorvis
