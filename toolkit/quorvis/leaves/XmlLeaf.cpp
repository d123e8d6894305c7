#include "toolkit/quorvis/formats/XmlSelection.h"
#include "toolkit/quorvis/leaves/Machine.h"
#include "toolkit/quorvis/leaves/ReadingLeaf.h"

namespace toolkit::quorvis {

LeafResult lookUpXml(const Query& query, Machine& machine) {
    LeafResult result;
    const std::string path(query.get(Attribute::Path));
    std::string problem;
    const auto selection = XmlSelection::parse(query.get(Attribute::Select), problem);
    if (!selection) {
        result.fail(EventCode::Unsupported, path, "wrong selection: " + problem);
        return result;
    }
    const std::shared_ptr<const std::string> content = contentOf(path, machine, result);
    if (content == nullptr) return result;
    const std::uint64_t limit = machine.settings().fileSystem.maxMatches;
    SelectedValues selected =
        selectValues(*content, *selection, limit, [&machine] { machine.effort().watchTimeNowAndThen(); });
    if (selected.problem) result.fail(EventCode::Parse, path, "damaged XML, " + *selected.problem);
    if (selected.tooMany)
        result.fail(EventCode::LimitMatches, path, "more than " + std::to_string(limit) + " matches");
    for (std::string& value : selected.values) {
        if (!passesTests(query, value, path, result)) continue;
        Item item;
        item.source = path;
        item.set("value", std::move(value));
        keepItem(machine.effort(), result, std::move(item));
    }
    return result;
}

}  // namespace toolkit::quorvis
