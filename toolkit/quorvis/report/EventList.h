#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/quorvis/report/Event.h"

namespace toolkit::quorvis {

// "limit-depth"
std::string_view nameOf(EventCode code);
// "error", "warning" or "info"
std::string_view severityOf(EventCode code);

// The events of a run, few enough to be read: of those of one code and one signature, and of all, only the first
// are kept, and one more counts the rest. Those that tell of an undecided signature are all kept.
class EventList {
  public:
    struct Entry {
        Event event;
        std::uint64_t count = 1;  // how many events it stands for
    };

    void add(Event event);
    void add(std::vector<Event> events);

    // In the order in which they came, those that count others last.
    std::vector<Entry> entries() const;

    // Whether a bound or the end of the time was told of, so that something was left out.
    bool toldLimit() const { return toldLimit_; }

  private:
    static constexpr std::size_t kMostAlike = 20;
    static constexpr std::size_t kMost = 1'000;

    struct Alike {
        std::size_t kept = 0;
        std::size_t summary = 0;  // one more than the index in summaries_; 0 while there is none
    };

    std::vector<Event> kept_;
    std::vector<Entry> summaries_;
    Entry rest_{{}, 0};
    std::map<std::pair<EventCode, std::string>, Alike> alike_;
    std::size_t vital_ = 0;  // of kept_, those that no bound holds for
    bool toldLimit_ = false;
};

// The event as one line of text: "warning: permission: /etc/x: cannot be opened [guid, leaf f]".
std::string lineOf(const EventList::Entry& entry);

}  // namespace toolkit::quorvis
