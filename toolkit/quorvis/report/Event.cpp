#include "toolkit/quorvis/report/Event.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace toolkit::quorvis {

namespace {

struct CodeRow {
    EventCode code;
    std::string_view name;
    std::string_view severity;
};

constexpr std::array<CodeRow, 21> kCodes = {{
    {EventCode::Permission, "permission", "warning"},
    {EventCode::Io, "io", "warning"},
    {EventCode::LimitDepth, "limit-depth", "warning"},
    {EventCode::LimitEntries, "limit-entries", "warning"},
    {EventCode::LimitBytes, "limit-bytes", "warning"},
    {EventCode::LimitMatches, "limit-matches", "warning"},
    {EventCode::LimitMemory, "limit-memory", "warning"},
    {EventCode::Aborted, "aborted", "warning"},
    {EventCode::Deadline, "deadline", "warning"},
    {EventCode::Loop, "loop", "info"},
    {EventCode::SpecialFile, "special-file", "info"},
    {EventCode::RemoteSkipped, "remote-skipped", "info"},
    {EventCode::Denied, "denied", "warning"},
    {EventCode::Parse, "parse", "warning"},
    {EventCode::UndefinedVariable, "undefined-variable", "warning"},
    {EventCode::Unresolved, "unresolved", "warning"},
    {EventCode::Config, "config", "warning"},
    {EventCode::Encoding, "encoding", "info"},
    {EventCode::Unsupported, "unsupported", "warning"},
    {EventCode::Sandbox, "sandbox", "error"},
    {EventCode::Invalid, "invalid", "error"},
}};
// rowOf() uses the code as an index.
static_assert([] {
    for (std::size_t i = 0; i < kCodes.size(); ++i) {
        if (kCodes[i].code != static_cast<EventCode>(i)) return false;
    }
    return true;
}());

const CodeRow& rowOf(EventCode code) {
    return kCodes.at(static_cast<std::size_t>(code));
}

constexpr std::size_t kMaxTextSize = std::size_t{4} << 10;
constexpr std::size_t kMaxPlaces = 1'000;
constexpr std::size_t kMaxNamed = 5;  // signatures that a line names

bool isLimit(EventCode code) {
    return code >= EventCode::LimitDepth && code <= EventCode::Deadline;
}

}  // namespace

std::string_view nameOf(EventCode code) {
    return rowOf(code).name;
}

std::string_view severityOf(EventCode code) {
    return rowOf(code).severity;
}

std::string EventCodes::names() const {
    std::string names;
    for (const CodeRow& row : kCodes) {
        if ((bits_ >> static_cast<unsigned>(row.code) & 1U) == 0) continue;
        names.append(names.empty() ? "" : " ").append(row.name);
    }
    return names;
}

bool isOfPrivatePlace(const Event& event) {
    return event.code == EventCode::Permission || event.code == EventCode::Denied;
}

void EventList::add(Event event) {
    reachedLimit_ = reachedLimit_ || isLimit(event.code);
    event.path.resize(std::min(event.path.size(), kMaxTextSize));
    event.text.resize(std::min(event.text.size(), kMaxTextSize));
    // Every undecided signature must be reported. There is at most one such event per signature.
    if (event.code == EventCode::Unresolved) return keep(std::move(event), unresolved_);
    if (isOfPrivatePlace(event) && event.guid.empty() && !event.path.empty()) {
        // Several walks may come to the same place.
        if (placesSeen_.contains({event.path, event.text})) return;
        if (places_ == kMaxPlaces) return countMore(std::move(event));
        placesSeen_.emplace(event.path, event.text);
        return keep(std::move(event), places_);
    }
    if (event.count > 1) return countMore(std::move(event));
    Alike& alike = alike_[{event.code, event.guid, event.ofFile}];
    if (alike.kept < kMaxAlike && kept_.size() - unresolved_ - places_ < kMax) {
        ++alike.kept;
        kept_.push_back(std::move(event));
    } else if (alike.kept < kMaxAlike) {
        if (rest_.count == 0)
            rest_.event = {event.code, {}, "more events of any kind were left out", {}, {}, event.ofFile};
        rest_.event.ofFile = rest_.event.ofFile && event.ofFile;
        ++rest_.count;
    } else {
        countMore(std::move(event));
    }
}

void EventList::keep(Event event, std::size_t& exempt) {
    ++exempt;
    kept_.push_back(std::move(event));
}

void EventList::countMore(Event event) {
    Alike& alike = alike_[{event.code, event.guid, event.ofFile}];
    if (alike.summary == 0) {
        summaries_.push_back(
            {{event.code, {}, "more such events were left out", std::move(event.guid), {}, event.ofFile}, 0});
        alike.summary = summaries_.size();
    }
    summaries_[alike.summary - 1].count += event.count;
}

void EventList::add(std::vector<Event> events) {
    for (Event& event : events) add(std::move(event));
}

std::vector<EventList::Entry> EventList::entries() const {
    std::vector<Entry> entries;
    entries.reserve(kept_.size() + summaries_.size() + 1);
    for (const Event& event : kept_) entries.push_back({event, event.count});
    std::ranges::copy(summaries_, std::back_inserter(entries));
    if (rest_.count > 0) entries.push_back(rest_);
    return entries;
}

std::string lineOf(const EventList::Entry& entry) {
    const Event& event = entry.event;
    std::string line;
    line.append(severityOf(event.code)).append(": ").append(nameOf(event.code)).append(": ");
    if (!event.path.empty()) line.append(event.path).append(": ");
    line += event.text;
    if (!event.because.empty()) line.append(", because of ").append(event.because);
    if (entry.count > 1) line.append(" (").append(std::to_string(entry.count)).append(")");
    if (!event.guid.empty()) {
        line.append(" [").append(event.guid);
        if (!event.leaf.empty()) line.append(", ").append(event.leaf);
        line += ']';
    }
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
    std::ranges::replace_if(line, isControl, '?');
    return line;
}

std::vector<std::string> linesOf(const EventList& events) {
    struct Undecided {
        EventList::Entry shown;  // with the identifiers of the first ones
        std::size_t named = 0;
    };
    std::vector<std::string> lines;
    std::vector<Undecided> undecided;
    for (const EventList::Entry& entry : events.entries()) {
        if (entry.event.code != EventCode::Unresolved) {
            lines.push_back(lineOf(entry));
            continue;
        }
        const auto alike = std::ranges::find_if(undecided, [&](const Undecided& other) {
            return other.shown.event.because == entry.event.because &&
                   other.shown.event.text == entry.event.text;
        });
        if (alike == undecided.end()) {
            undecided.push_back({entry, 1});
            continue;
        }
        std::string& guids = alike->shown.event.guid;
        ++alike->shown.count;
        ++alike->named;
        if (alike->named <= kMaxNamed) guids.append(", ").append(entry.event.guid);
        if (alike->named == kMaxNamed + 1) guids += ", ...";
    }
    for (const Undecided& each : undecided) lines.push_back(lineOf(each.shown));
    return lines;
}

}  // namespace toolkit::quorvis
