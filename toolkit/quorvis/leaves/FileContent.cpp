#include "toolkit/quorvis/leaves/FileContent.h"

#include <utility>

namespace toolkit::quorvis {

namespace {

std::shared_ptr<const std::string> take(Files::Content content, LeafResult& result) {
    result.incomplete = content.access == Access::Failed;
    if (content.event) result.events.push_back(std::move(*content.event));
    return content.access == Access::Ok ? std::move(content.bytes) : nullptr;
}

}  // namespace

std::shared_ptr<const std::string> contentOf(const std::string& path, EvaluationContext& context,
                                             LeafResult& result) {
    return take(context.files().read(path, context.settings().fileSystem.maxContentSize), result);
}

std::shared_ptr<const std::string> startOf(const std::string& path, std::uint64_t limit,
                                           EvaluationContext& context, LeafResult& result) {
    return take(context.files().readStart(path, limit), result);
}

std::optional<RandomAccessFile> openFile(const std::string& path, EvaluationContext& context,
                                         LeafResult& result) {
    Files::Opening opening = context.files().open(path);
    result.incomplete = opening.access == Access::Failed;
    if (opening.event) result.events.push_back(std::move(*opening.event));
    if (opening.access != Access::Ok) return std::nullopt;
    return RandomAccessFile(std::move(opening.file),
                            [&budget = context.budget()](std::uint64_t bytes) { budget.chargeRead(bytes); });
}

}  // namespace toolkit::quorvis
