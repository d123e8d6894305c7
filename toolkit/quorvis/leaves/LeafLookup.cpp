#include "toolkit/quorvis/leaves/LeafLookup.h"

#include <algorithm>
#include <array>
#include <functional>
#include <new>
#include <utility>

namespace toolkit::quorvis {

namespace {

using LookUp = LeafResult (*)(const Query&, EvaluationContext&);

// In the order of LeafKind.
constexpr std::array<LookUp, 13> kLookUps = {
    lookUpPackage,   lookUpFile,    lookUpGlob,    lookUpContent,     lookUpProperty,
    lookUpXml,       lookUpProcess, lookUpElf,     lookUpFileVersion, lookUpSwidTag,
    lookUpComponent, lookUpBytes,   lookUpCompare,
};

constexpr std::uint64_t kMegabyte = std::uint64_t{1} << 20;
constexpr unsigned kLeavesPerTimeLimit = 8;  // a leaf may take this fraction of the time limit
constexpr std::chrono::seconds kMinTime{1};

std::uint64_t maxBytesRead(LeafKind kind, const Settings::FileSystem& settings) {
    switch (kind) {
        case LeafKind::File:
            return 2 * settings.maxHashedSize;
        case LeafKind::Glob:
            return std::max(settings.maxHashedSize, std::uint64_t{4096} * kMegabyte);
        case LeafKind::Bytes:
        case LeafKind::Elf:
            return std::max(settings.maxHashedSize, settings.maxContentSize) + 64 * kMegabyte;
        case LeafKind::SwidTag:
            return 256 * kMegabyte;
        case LeafKind::Component:
            return 1024 * kMegabyte;
        default:
            break;
    }
    // The file, once more when it changes while it is read, and its tables.
    return 2 * settings.maxContentSize + 64 * kMegabyte;
}

std::shared_ptr<const std::string> take(Files::Content content, LeafResult& result) {
    result.incomplete = content.access == Access::Failed;
    if (content.event) result.events.push_back(std::move(*content.event));
    return content.access == Access::Ok ? std::move(content.bytes) : nullptr;
}

}  // namespace

bool Query::operator==(const Query& other) const {
    const std::size_t count = leaf_->attributes.size();
    if (kind() != other.kind() || count != other.leaf_->attributes.size()) return false;
    for (std::size_t i = 0; i < count; ++i) {
        const bool sameAttribute = leaf_->attributes[i].attribute == other.leaf_->attributes[i].attribute;
        if (!sameAttribute || valueAt(i) != other.valueAt(i)) return false;
    }
    return captures() == other.captures() && keys() == other.keys();
}

std::size_t Query::hash() const {
    auto hash = static_cast<std::size_t>(kind());
    for (std::size_t i = 0; i < leaf_->attributes.size(); ++i)
        hash = hash * 31 + std::hash<std::string_view>()(valueAt(i));
    return hash;
}

LookupLimits limitsOf(LeafKind kind, const Settings& settings) {
    using Duration = LookupBudget::Clock::duration;
    const bool manyItems = kind == LeafKind::Glob || kind == LeafKind::Package;
    return {maxBytesRead(kind, settings.fileSystem), (manyItems ? 64 : 4) * kMegabyte,
            std::max<Duration>(Duration(settings.evaluation.timeLimit) / kLeavesPerTimeLimit, kMinTime)};
}

LeafResult lookUp(const Query& query, EvaluationContext& context) {
    LeafResult unknown;
    const std::string path(query.get(Attribute::Path));
    try {
        const LookupBudget::LeafScope scope(context.budget(), limitsOf(query.kind(), context.settings()));
        LeafResult result = kLookUps.at(static_cast<std::size_t>(query.kind()))(query, context);
        if (!query.captures().empty()) captureValues(query, context, result);
        return result;
    } catch (const BudgetExceeded& exceeded) {
        unknown.fail(exceeded.code, path, exceeded.text);
    } catch (const std::bad_alloc&) {
        context.releaseMemory();
        unknown.fail(EventCode::LimitMemory, path, "this takes more memory than is allowed");
    }
    return unknown;
}

void keepItem(LookupBudget& budget, LeafResult& result, Item item) {
    constexpr std::uint64_t kItemOverhead = 64;  // bytes, besides the texts
    constexpr std::uint64_t kFieldOverhead = 48;
    std::uint64_t bytes = kItemOverhead + item.source.size();
    for (const Field& field : item.fields) bytes += kFieldOverhead + field.value.size();
    budget.chargeKept(bytes);
    result.items.push_back(std::move(item));
}

std::shared_ptr<const std::string> contentOf(const std::string& path, EvaluationContext& context,
                                             LeafResult& result, KeySearch search) {
    return take(context.files().read(path, context.settings().fileSystem.maxContentSize, search), result);
}

std::shared_ptr<const std::string> startOf(const std::string& path, std::uint64_t limit,
                                           EvaluationContext& context, LeafResult& result) {
    return take(context.files().readStart(path, limit), result);
}

std::optional<RandomAccessFile> openFile(const std::string& path, EvaluationContext& context,
                                         LeafResult& result, KeySearch search) {
    Files::Opening opening = context.files().open(path, search);
    result.incomplete = opening.access == Access::Failed;
    if (opening.event) result.events.push_back(std::move(*opening.event));
    if (opening.access != Access::Ok) return std::nullopt;
    return RandomAccessFile(
        std::move(opening.file),
        [&budget = context.budget()](std::uint64_t bytes) { budget.chargeRead(bytes); },
        std::move(opening.start));
}

}  // namespace toolkit::quorvis
