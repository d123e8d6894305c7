// The two output documents: the signatures that matched, and the events.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/machine/files/OutputFile.h"
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
    std::vector<std::pair<std::string, std::string>> variables;        // name and value
    std::vector<std::pair<std::string, std::string>> identities = {};  // further elements of the metadata
};

// Appends the element of a match in ASCII, as a line of its own.
void appendMatch(std::string& xml, const Match& match);

// The elements of many matches, in blocks, so that they are not copied while their number grows.
class MatchElements {
  public:
    void add(std::string_view element);
    const std::vector<std::string>& blocks() const { return blocks_; }

  private:
    std::vector<std::string> blocks_;
};

// Writes the XML document of the results. `matches` are elements from appendMatch(); `complete` is false when a limit left
// something out.
void writeOutputDocument(const MatchElements& matches, bool complete, const TextSink& sink);

// The XML document of the events in ASCII, one line per event.
std::string warningsDocument(const EventList& events);

// Limits the size of an output so that a reader can keep its tree in memory. Leaving out the elements beyond the limit is
// better than an output that readers refuse.
class OutputLimit {
  public:
    // Whether the element is within the limit. If so, its size is counted.
    bool admit(std::string_view element);

  private:
    std::uint64_t size_ = 0;
};

}  // namespace toolkit::quorvis
