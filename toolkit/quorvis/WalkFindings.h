#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/GlobTrie.h"
#include "toolkit/quorvis/TreeWalk.h"

namespace toolkit::quorvis {

// Collects what a walk finds, and what keeps it from finding all.
class WalkFindings {
  public:
    WalkFindings(const GlobTrie& trie, std::vector<GlobHits>& hits, std::uint64_t maxMatches)
        : trie_(trie),
          hits_(hits),
          maxMatches_(maxMatches),
          problemsOf_(trie.size()),
          lastHits_(hits.size()) {}

    // Begins another name, of which each request is told once.
    void nextName() { ++name_; }

    // This path is what the requests that end at this node look for.
    void hit(GlobTrie::NodeId node, const std::string& path);
    // What could hold a match for this node and those below it could not be examined.
    void problem(GlobTrie::NodeId node, EventCode code, const std::string& path, std::string text);
    // The same for all requests, whose walk ends here.
    void stop(EventCode code, std::string text);
    bool stopped() const { return stopped_; }

    // Hands all that is collected over to the hits.
    void finish();

  private:
    struct Problem {
        GlobTrie::NodeId node = 0;
        Event event;
    };
    void keep(GlobHits& hits, const std::string& path);

    const GlobTrie& trie_;
    std::vector<GlobHits>& hits_;
    std::uint64_t maxMatches_;
    std::vector<Problem> problems_;
    std::vector<std::uint8_t> problemsOf_;  // how many are kept of each node
    std::vector<std::uint64_t> lastHits_;   // by request: the latest name that was a match
    std::uint64_t name_ = 0;
    bool stopped_ = false;
};

}  // namespace toolkit::quorvis
