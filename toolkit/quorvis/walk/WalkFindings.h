#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/quorvis/walk/GlobTrie.h"
#include "toolkit/quorvis/walk/TreeSearch.h"

namespace toolkit::quorvis {

// Collects what one thread of a walk finds, and what keeps it from finding all. In which order that comes, and how it
// is spread over several collections, makes no difference to the hits.
class WalkFindings {
  public:
    WalkFindings(const GlobTrie& trie, std::size_t requests, std::uint64_t maxMatches)
        : trie_(trie), maxMatches_(maxMatches), found_(requests), lastHits_(requests) {}

    // Begins another name, of which each request is told once.
    void nextName() { ++name_; }

    // This path is what the requests that end at this node look for.
    void hit(GlobTrie::NodeId node, const std::string& path);
    // What could hold a match for this node and those below it could not be examined.
    void problem(GlobTrie::NodeId node, EventCode code, const std::string& path, std::string text);

    // Takes over what another one has collected.
    void add(WalkFindings&& other);
    // Hands all that is collected over to the hits, with the event that ended the walk early.
    void finish(const std::optional<Event>& ending, std::vector<GlobHits>& hits);

  private:
    struct Found {
        std::vector<std::string> paths;  // a heap with the last one on top
        bool tooMany = false;
        bool tooLong = false;
    };
    void keep(Found& found, std::string path);
    static constexpr std::size_t kMostBytes = std::size_t{24} << 20;
    void keep(std::vector<Event>& problems, Event event);

    const GlobTrie& trie_;
    std::uint64_t maxMatches_;
    std::vector<Found> found_;                                 // by request
    std::map<GlobTrie::NodeId, std::vector<Event>> problems_;  // of each node the first ones by path
    std::vector<std::uint64_t> lastHits_;                      // by request: the latest name that was a match
    std::uint64_t name_ = 0;
    std::size_t held_ = 0;  // bytes of all paths
};

}  // namespace toolkit::quorvis
