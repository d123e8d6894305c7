#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"

namespace toolkit::quorvis {

// Looks leaves up in a tree of files of the test's own.
class LeafTester {
  public:
    using Attributes = std::vector<std::pair<Attribute, std::string>>;

    zavtest::ScratchDir tree;
    Settings settings;
    std::vector<NamedKey> keys;  // of the leaves that are looked up

    // Uses a new context for each lookup, so that no earlier state of the files is known.
    LeafResult ask(LeafKind kind, Attributes attributes, std::vector<Capture> captures = {}) {
        const Root root(tree.path().string());
        return askOf(root, kind, std::move(attributes), std::move(captures));
    }

    LeafResult askLiveSystem(LeafKind kind, Attributes attributes, std::vector<Capture> captures = {}) {
        return askOf(Root(), kind, std::move(attributes), std::move(captures));
    }

    // The value of a field of the first item; "-" when there is none.
    static std::string first(const LeafResult& result, std::string_view field) {
        const std::string* const value = result.items.empty() ? nullptr : result.items.front().find(field);
        return value == nullptr ? "-" : *value;
    }

    // The codes of the events, in order.
    static std::vector<EventCode> codes(const LeafResult& result) {
        std::vector<EventCode> codes;
        for (const Event& event : result.events) codes.push_back(event.code);
        return codes;
    }

  private:
    LeafResult askOf(const Root& root, LeafKind kind, Attributes attributes, std::vector<Capture> captures) {
        std::ranges::sort(attributes);
        leaf_ = std::make_unique<Leaf>();
        leaf_->kind = kind;
        leaf_->captures = std::move(captures);
        leaf_->keys = keys;
        std::vector<std::string> values;
        for (auto& [attribute, value] : attributes) {
            leaf_->attributes.push_back({attribute, Template()});
            values.push_back(std::move(value));
        }
        EvaluationContext context(root, settings);
        return lookUp(Query(*leaf_, std::move(values)), context);
    }

    std::unique_ptr<Leaf> leaf_;
};

}  // namespace toolkit::quorvis
