#include "toolkit/quorvis/files/Effort.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace toolkit::quorvis {

namespace {

constexpr std::uint64_t kMegabyte = std::uint64_t{1} << 20;
constexpr std::uint64_t kItem = 64;  // bytes, besides its texts
constexpr std::uint64_t kField = 48;
constexpr unsigned kLeavesInTime = 8;  // of the longest that are allowed
constexpr std::chrono::seconds kShortestTime{1};

std::uint64_t bytesReadBy(LeafKind kind, const Settings::FileSystem& settings) {
    switch (kind) {
        case LeafKind::File:
            return 2 * settings.maxHashedSize;
        case LeafKind::Glob:
            return std::max(settings.maxHashedSize, std::uint64_t{4096} * kMegabyte);
        case LeafKind::SwidTag:
            return 256 * kMegabyte;
        default:
            break;
    }
    // The file, once more when it changed meanwhile, and its tables.
    return 2 * settings.maxContentSize + 64 * kMegabyte;
}

std::uint64_t taken(std::uint64_t& left, std::uint64_t bytes) {
    const std::uint64_t granted = std::min(left, bytes);
    left -= granted;
    return granted;
}

}  // namespace

Contract contractOf(LeafKind kind, const Settings& settings) {
    const std::chrono::seconds all = settings.evaluation.timeLimit;
    const bool many = kind == LeafKind::Glob || kind == LeafKind::Package;
    return {bytesReadBy(kind, settings.fileSystem), (many ? 64 : 4) * kMegabyte,
            std::max<Effort::Clock::duration>(Effort::Clock::duration(all) / kLeavesInTime, kShortestTime)};
}

void Effort::show(Clock::time_point end) {
    endOfLeaf_ = end;
    if (pulse_ != nullptr) pulse_->begin(end);
}

Effort::OfLeaf::OfLeaf(Effort& effort, LeafKind kind) : effort_(effort) {
    effort_.left_ = contractOf(kind, effort_.settings_);
    effort_.inLeaf_ = true;
    effort_.show(std::min(Clock::now() + effort_.left_.time, effort_.end_));
}

Effort::OfLeaf::~OfLeaf() {
    effort_.inLeaf_ = false;
    effort_.endOfLeaf_ = effort_.end_;
    if (effort_.pulse_ != nullptr) effort_.pulse_->end();
}

Effort::Until::Until(Effort& effort, Clock::time_point end) : effort_(effort), before_(effort.endOfLeaf_) {
    effort_.show(end);
}

Effort::Until::~Until() {
    effort_.show(before_);
    if (!effort_.inLeaf_ && effort_.pulse_ != nullptr) effort_.pulse_->end();
}

void Effort::read(std::uint64_t bytes) {
    watchTime();
    if (inLeaf_ && taken(left_.bytesRead, bytes) < bytes)
        throw OverContract(EventCode::LimitBytes, "more bytes would have to be read than one leaf may read");
}

void Effort::keep(std::uint64_t bytes) {
    if (inLeaf_ && taken(left_.bytesKept, bytes) < bytes)
        throw OverContract(EventCode::LimitBytes, "more was found than one leaf may keep");
}

void Effort::watchTime() const {
    const Clock::time_point now = Clock::now();
    if (now >= end_) throw OverContract(EventCode::Deadline, "the time for the evaluation is over");
    if (now >= endOfLeaf_) throw OverContract(EventCode::Deadline, "this took longer than one leaf may take");
}

void keepItem(Effort& effort, LeafResult& result, Item item) {
    std::uint64_t bytes = kItem + item.source.size();
    for (const Field& field : item.fields) bytes += kField + field.value.size();
    effort.keep(bytes);
    result.items.push_back(std::move(item));
}

}  // namespace toolkit::quorvis
