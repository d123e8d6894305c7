#include "toolkit/quorvis/formats/Records.h"

#include <algorithm>
#include <utility>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxDepth = 64;
constexpr std::size_t kMaxTextSize = std::size_t{64} << 10;

// Replaces the escapes of JSON pointers: "~1" is a slash and "~0" is a tilde.
std::string withoutTildes(std::string_view step) {
    std::string name;
    for (std::size_t i = 0; i < step.size(); ++i) {
        const bool escape =
            step[i] == '~' && i + 1 < step.size() && (step[i + 1] == '0' || step[i + 1] == '1');
        name += escape ? (step[++i] == '1' ? '/' : '~') : step[i];
    }
    return name;
}

bool hasWildcard(const KeySteps& steps) {
    return std::ranges::any_of(steps, &KeyStep::any);
}

bool isStep(const KeyStep& step, std::string_view name) {
    return step.any || step.name == name;
}

std::string cut(std::string_view text) {
    return std::string(text.substr(0, kMaxTextSize));
}

}  // namespace

KeySteps parseKeySteps(std::string_view key) {
    KeySteps steps;
    if (key == ".") return steps;
    const bool pointer = key.starts_with('/');
    if (pointer) key.remove_prefix(1);
    const char separator = pointer ? '/' : '.';
    const auto count = std::ranges::count(key, separator);
    for (std::ptrdiff_t i = 0; i <= count; ++i) {
        const std::string_view step = takeField(key, separator);
        if (pointer) {
            steps.push_back({withoutTildes(step), false});
        } else {
            steps.push_back({std::string(step), step == "*"});
        }
    }
    return steps;
}

namespace {

using Reader = Records (*)(std::string_view, const RecordRequest&, const ProgressCheck&);

struct PropertyFormat {
    std::string_view name;
    Reader read;
    bool tree = false;
    bool sections = false;
};

constexpr PropertyFormat kFormats[] = {
    {"headers", readHeaderRecords, false, true},
    {"ini", readIniRecords, false, true},
    {"json", readJsonRecords, true, false},
    {"manifest", readManifestRecords, false, true},
    {"properties", readPropertiesRecords, false, false},
    {"shell", nullptr, false, false},
    {"systemd", readUnitRecords, false, true},
    {"toml", readTomlRecords, true, false},
    {"yaml", readYamlRecords, true, false},
};

const PropertyFormat* formatNamed(std::string_view name) {
    const auto* const found = std::ranges::find(kFormats, name, &PropertyFormat::name);
    return found == std::end(kFormats) ? nullptr : found;
}

}  // namespace

bool isPropertyFormat(std::string_view format) {
    return formatNamed(format) != nullptr;
}

bool isTreeFormat(std::string_view format) {
    const PropertyFormat* const known = formatNamed(format);
    return known != nullptr && known->tree;
}

bool hasSections(std::string_view format) {
    const PropertyFormat* const known = formatNamed(format);
    return known != nullptr && known->sections;
}

Records readRecords(std::string_view format, std::string_view text, const RecordRequest& request,
                    const ProgressCheck& checkProgress) {
    const PropertyFormat* const known = formatNamed(format);
    return known == nullptr || known->read == nullptr ? Records() : known->read(text, request, checkProgress);
}

RecordCollector::RecordCollector(const RecordRequest& request, const ProgressCheck& checkProgress)
    : request_(request),
      checkProgress_(checkProgress),
      manyRecords_(hasWildcard(request.each)),
      manyItems_(request.all || hasWildcard(request.keys.front().steps)) {
    record_.values.resize(request.keys.size() - 1);
}

void RecordCollector::key(std::string_view name) {
    if (wantsMembers()) name_ = name;
}

std::string RecordCollector::nextName() const {
    if (open_.empty()) return {};
    return open_.back().array ? std::to_string(open_.back().index) : name_;
}

RecordCollector::Place RecordCollector::nextPlace() const {
    const std::uint64_t allKeys = (std::uint64_t{1} << request_.keys.size()) - 1;
    if (open_.empty()) return {true, request_.each.empty() ? allKeys : 0};
    const Container& parent = open_.back();
    if (!parent.isWanted()) return {};
    const std::string name = nextName();
    const std::size_t depth = open_.size();
    Place place;
    if (depth <= request_.each.size()) {
        place.onWay = parent.place.onWay && isStep(request_.each[depth - 1], name);
        if (place.onWay && depth == request_.each.size()) place.onKeys = allKeys;
        return place;
    }
    const std::size_t step = depth - request_.each.size() - 1;
    for (std::size_t i = 0; i < request_.keys.size(); ++i) {
        const std::uint64_t bit = std::uint64_t{1} << i;
        const KeySteps& steps = request_.keys[i].steps;
        if ((parent.place.onKeys & bit) != 0 && step < steps.size() && isStep(steps[step], name))
            place.onKeys |= bit;
    }
    return place;
}

bool RecordCollector::wantsNext() const {
    const Place place = nextPlace();
    return place.onWay || place.onKeys != 0;
}

void RecordCollector::beginRecord() {
    for (std::size_t i = 0; i < request_.keys.size(); ++i) {
        if (!request_.keys[i].recordName || open_.empty()) continue;
        if (i == 0) {
            record_.items.assign(1, cut(nextName()));
        } else {
            record_.values[i - 1] = cut(nextName());
        }
    }
}

void RecordCollector::endRecord() {
    bool complete = !record_.items.empty();
    for (std::size_t i = 1; i < request_.keys.size(); ++i)
        complete = complete && (!request_.keys[i].required || record_.values[i - 1].has_value());
    if (complete && itemCount_ + record_.items.size() > request_.limit) {
        found_.tooMany = true;
        record_.items.resize(request_.limit - itemCount_);
        complete = !record_.items.empty();
    }
    if (complete) {
        itemCount_ += record_.items.size();
        found_.records.push_back(std::move(record_));
    }
    record_ = Record();
    record_.values.resize(request_.keys.size() - 1);
}

void RecordCollector::keepItem(std::optional<std::string_view> text) {
    if (!manyItems_ || (request_.emptyClears && text && text->empty())) {
        record_.items.clear();
        if (manyItems_) return;
    }
    // One more than allowed shows that there are too many.
    if (text && record_.items.size() <= request_.limit) record_.items.push_back(cut(*text));
}

// Keeps the value for all keys that end here. An object or array is passed like null.
void RecordCollector::keep(const Place& place, std::optional<std::string_view> text) {
    if (place.onKeys == 0) return;
    const std::size_t steps = open_.size() - request_.each.size();
    for (std::size_t i = 0; i < request_.keys.size(); ++i) {
        const RecordKey& key = request_.keys[i];
        const bool here = (place.onKeys >> i & 1U) != 0 && key.steps.size() == steps && !key.recordName;
        if (!here) continue;
        if (i == 0) {
            keepItem(text);
        } else if (text) {
            record_.values[i - 1] = cut(*text);
        } else {
            record_.values[i - 1].reset();
        }
    }
}

void RecordCollector::passValue() {
    if (checkProgress_) checkProgress_();
    if (!open_.empty()) ++open_.back().index;
}

void RecordCollector::scalar(std::optional<std::string_view> text) {
    const Place place = nextPlace();
    const bool record = isRecord(place);
    if (record) beginRecord();
    keep(place, text);
    if (record && manyRecords_) endRecord();
    passValue();
}

bool RecordCollector::open(bool array) {
    if (open_.size() == kMaxDepth) {
        setProblem("nested more than " + std::to_string(kMaxDepth) + " levels");
        return false;
    }
    const Place place = nextPlace();
    const bool record = isRecord(place);
    if (record) beginRecord();
    keep(place, std::nullopt);
    open_.push_back({place, array, record, 0});
    return true;
}

void RecordCollector::close() {
    const bool record = open_.back().record;
    open_.pop_back();
    if (record && manyRecords_) endRecord();
    passValue();
}

bool RecordCollector::isDone() const {
    return request_.firstCounts && !record_.items.empty() &&
           std::ranges::all_of(record_.values, [](const auto& value) { return value.has_value(); });
}

void RecordCollector::setProblem(std::string problem) {
    if (found_.problem.empty()) found_.problem = std::move(problem);
}

Records RecordCollector::takeRecords() {
    // A record that a damage has cut off is not complete, unless it is the only one.
    if (!manyRecords_) endRecord();
    return std::move(found_);
}

}  // namespace toolkit::quorvis
