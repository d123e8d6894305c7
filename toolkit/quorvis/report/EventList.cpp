#include "toolkit/quorvis/report/EventList.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace toolkit::quorvis {

namespace {

struct CodeRow {
    std::string_view name;
    std::string_view severity;
};

// In the order of EventCode.
constexpr std::array<CodeRow, 21> kCodes = {{
    {"permission", "warning"},
    {"io", "warning"},
    {"limit-depth", "warning"},
    {"limit-entries", "warning"},
    {"limit-bytes", "warning"},
    {"limit-matches", "warning"},
    {"limit-memory", "warning"},
    {"aborted", "warning"},
    {"deadline", "warning"},
    {"loop", "info"},
    {"special-file", "info"},
    {"remote-skipped", "info"},
    {"denied", "warning"},
    {"parse", "warning"},
    {"undefined-variable", "warning"},
    {"unresolved", "warning"},
    {"config", "warning"},
    {"encoding", "info"},
    {"unsupported", "warning"},
    {"sandbox", "error"},
    {"invalid", "error"},
}};
static_assert(kCodes[static_cast<std::size_t>(EventCode::Invalid)].name == "invalid");

const CodeRow& rowOf(EventCode code) {
    return kCodes.at(static_cast<std::size_t>(code));
}

constexpr std::size_t kLongestText = std::size_t{4} << 10;

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
    toldLimit_ = toldLimit_ || isLimit(event.code);
    event.path.resize(std::min(event.path.size(), kLongestText));
    event.text.resize(std::min(event.text.size(), kLongestText));
    Alike& alike = alike_[{event.code, event.guid}];
    // Which signatures are undecided must be known of all of them; there is at most one such event of each.
    const bool vital = event.code == EventCode::Unresolved;
    if (vital || (alike.kept < kMostAlike && kept_.size() - vital_ < kMost)) {
        ++alike.kept;
        if (vital) ++vital_;
        kept_.push_back(std::move(event));
    } else if (alike.kept < kMostAlike) {
        if (rest_.count == 0) rest_.event = {event.code, {}, "more events of any kind were left out", {}, {}};
        ++rest_.count;
    } else if (alike.summary == 0) {
        summaries_.push_back(
            {{event.code, {}, "more such events were left out", std::move(event.guid), {}}, 1});
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
