#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

LeafResult lookUpXml(const Query& query, EvaluationContext& context) {
    LeafResult result;
    const std::string path(query.get(Attribute::Path));
    std::string problem;
    const auto selection = XmlSelection::parse(query.get(Attribute::Select), problem);
    if (!selection) {
        result.fail(EventCode::Unsupported, path, "wrong selection: " + problem);
        return result;
    }
    const std::shared_ptr<const std::string> content = contentOf(path, context, result);
    if (content == nullptr) return result;
    const std::uint64_t limit = context.settings().fileSystem.maxMatches;
    SelectedValues selected =
        selectValues(*content, *selection, limit, [&context] { context.budget().checkTimeOccasionally(); });
    if (selected.problem) result.fail(EventCode::Parse, path, "damaged XML, " + *selected.problem);
    if (selected.tooMany)
        result.fail(EventCode::LimitMatches, path, "more than " + std::to_string(limit) + " matches");
    for (std::string& value : selected.values) {
        if (!passesValueTests(query, value, path, result)) continue;
        Item item;
        item.source = path;
        item.set("value", std::move(value));
        keepItem(context.budget(), result, std::move(item));
    }
    return result;
}

}  // namespace toolkit::quorvis
