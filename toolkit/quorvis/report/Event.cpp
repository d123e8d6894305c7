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

void EventList::add(Event event) {
    reachedLimit_ = reachedLimit_ || isLimit(event.code);
    event.path.resize(std::min(event.path.size(), kMaxTextSize));
    event.text.resize(std::min(event.text.size(), kMaxTextSize));
    Alike& alike = alike_[{event.code, event.guid, event.ofFile}];
    // Every undecided signature must be reported. There is at most one such event per signature.
    const bool unresolved = event.code == EventCode::Unresolved;
    if (unresolved || (alike.kept < kMaxAlike && kept_.size() - unresolved_ < kMax)) {
        ++alike.kept;
        if (unresolved) ++unresolved_;
        kept_.push_back(std::move(event));
    } else if (alike.kept < kMaxAlike) {
        if (rest_.count == 0)
            rest_.event = {event.code, {}, "more events of any kind were left out", {}, {}, event.ofFile};
        rest_.event.ofFile = rest_.event.ofFile && event.ofFile;
        ++rest_.count;
    } else if (alike.summary == 0) {
        summaries_.push_back(
            {{event.code, {}, "more such events were left out", std::move(event.guid), {}, event.ofFile}, 1});
        alike.summary = summaries_.size();
    } else {
        ++summaries_[alike.summary - 1].count;
    }
}

void EventList::add(std::vector<Event> events) {
    for (Event& event : events) add(std::move(event));
}

std::vector<EventList::Entry> EventList::entries() const {
    std::vector<Entry> entries;
    entries.reserve(kept_.size() + summaries_.size() + 1);
    for (const Event& event : kept_) entries.push_back({event, 1});
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

}  // namespace toolkit::quorvis
