#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

namespace toolkit::quorvis {

// The subject of an event. The warnings file contains it as nameOf() writes it: "limit-depth".
enum class EventCode : std::uint8_t {
    Permission,
    Io,
    LimitDepth,
    LimitEntries,
    LimitBytes,
    LimitMatches,
    LimitMemory,
    Aborted,
    Deadline,
    Loop,
    SpecialFile,
    RemoteSkipped,
    Denied,
    Parse,
    UndefinedVariable,
    Unresolved,
    Config,
    Encoding,
    Unsupported,
    Sandbox,  // the sandbox is incomplete
    Invalid,  // the signatures file was refused
};

// Something that limits or explains the results. The evaluation of a signature sets guid and leaf.
struct Event {
    EventCode code{};
    std::string path;  // of the file concerned; empty when there is none
    std::string text;  // a sentence without a full stop
    std::string guid;  // of the signature; empty when the event concerns all signatures
    std::string leaf;  // the id of the leaf, or its kind when it has no id
    // Whether it only concerns files that were found, each of which is a possible result of its own. What the event
    // tells of one of them does not make other results doubtful.
    bool ofFile = false;
    std::uint64_t count = 1;   // the number of events that this one stands for
    std::string because = {};  // of Unresolved: the names of the codes that caused it, separated by blanks
    // Whether the walk reports the place once for all signatures, so that none of them has to.
    bool ofWalk = false;
};

// A set of codes.
class EventCodes {
  public:
    void add(EventCode code) { bits_ |= 1U << static_cast<unsigned>(code); }
    void add(const EventCodes& others) { bits_ |= others.bits_; }
    // The names, separated by blanks.
    std::string names() const;

  private:
    std::uint32_t bits_ = 0;
};

// "limit-depth"
std::string_view nameOf(EventCode code);
// "error", "warning" or "info"
std::string_view severityOf(EventCode code);

// Whether the event tells of a place that the user of the scanner, or every user, may not see.
bool isOfPrivatePlace(const Event& event);

// The events of a run. Their number is limited, per signature and code as well as in total: further events are only
// counted, in summary entries. Events with the code Unresolved are always kept. Private places of no particular signature
// have a limit of their own, and each is kept once.
class EventList {
  public:
    struct Entry {
        Event event;
        std::uint64_t count = 1;  // the number of events that this entry represents
    };

    void add(Event event);
    void add(std::vector<Event> events);

    // The kept events in the order of add(), then the summaries.
    std::vector<Entry> entries() const;

    // Whether an event was added that says that a limit or the deadline was reached, and the results are incomplete.
    bool reachedLimit() const { return reachedLimit_; }

  private:
    static constexpr std::size_t kMaxAlike = 20;
    static constexpr std::size_t kMax = 1'000;

    void keep(Event event, std::size_t& exempt);
    void countMore(Event event);

    struct Alike {
        std::size_t kept = 0;
        std::size_t summary = 0;  // index in summaries_ plus 1; 0 when there is none
    };

    std::vector<Event> kept_;
    std::vector<Entry> summaries_;
    Entry rest_{{}, 0};
    std::map<std::tuple<EventCode, std::string, bool>, Alike> alike_;
    std::size_t unresolved_ = 0;  // numbers of events in kept_ that are exempt from the limits
    std::size_t places_ = 0;
    std::set<std::pair<std::string, std::string>> placesSeen_;  // path and text
    bool reachedLimit_ = false;
};

// The event as a line of text: "warning: permission: /etc/x: cannot be opened [guid, f]".
std::string lineOf(const EventList::Entry& entry);

// The events as lines. Undecided signatures for which the reasons are the same share a line, which names the first ones.
std::vector<std::string> linesOf(const EventList& events);

}  // namespace toolkit::quorvis
