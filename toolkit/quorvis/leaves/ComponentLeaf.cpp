#include <algorithm>
#include <functional>
#include <string>

#include "toolkit/quorvis/files/Disclosure.h"
#include "toolkit/quorvis/formats/Components.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

namespace {

void setKnown(Item& item, std::string_view name, std::string_view value) {
    if (!value.empty()) item.set(name, std::string(value.substr(0, kMaxValueSize)));
}

Item itemOf(const Component& component, const std::string& path) {
    Item item;
    item.source = path;
    item.set("path", path + component.place.substr(0, kMaxValueSize));
    setKnown(item, "name", component.name);
    setKnown(item, "version", component.version);
    setKnown(item, "group", component.group);
    setKnown(item, "role", component.role);
    setKnown(item, "purl", component.purl);
    setKnown(item, "value", component.value);
    if (component.role != "main" && component.role != "setting")
        item.set("container", path + component.container.substr(0, kMaxValueSize));
    return item;
}

// Whether a value holds a key or the hash of a password.
bool holdsSecret(const Component& component) {
    return holdsKey(component.name) || holdsKey(component.version) || holdsKey(component.group) ||
           holdsKey(component.place) || holdsKey(component.value);
}

bool passes(const Query& query, const Component& component, const std::string& path, LeafResult& result) {
    // Settings are not software, so they are found only on request.
    if (component.role == "setting" && query.get(Attribute::Role) != "setting") return false;
    if (!isOrAny(query, Attribute::Role, component.role) || !isOrAny(query, Attribute::Name, component.name))
        return false;
    if (hasVersionTest(query) &&
        (component.version.empty() ||
         !passesVersionTests(query, Scheme::Dotted, component.version, path, result)))
        return false;
    if (!holdsSecret(component)) return true;
    result.fail(EventCode::Denied, path,
                "A component holds a key or the hash of a password, so it is left out");
    return false;
}

bool isPlain(const ComponentList& list) {
    return list.components.empty() && list.problem.empty();
}

// Most programs have no components in any format. So a program without those of one format is searched for those of the
// others while it is open.
ComponentList readProgram(const ComponentFormat& format, const RandomAccessFile& file,
                          const std::string& path, const ComponentLimits& limits,
                          const ProgressCheck& checkProgress, EvaluationContext& context) {
    ComponentList list = format.readFile(file, path, limits, checkProgress);
    const auto isPlainIn = [&](const ComponentFormat* other) {
        try {
            return other == &format || isPlain(other->readFile(file, path, limits, checkProgress));
        } catch (const BudgetExceeded&) {
            return false;  // this leaf has its result
        }
    };
    if (isPlain(list) && std::ranges::all_of(programFormats(), isPlainIn))
        context.plainPrograms().insert(std::hash<std::string>()(path));
    return list;
}

ComponentList readComponents(const ComponentFormat& format, const std::string& path,
                             EvaluationContext& context, LeafResult& result) {
    if (format.ofPrograms && context.plainPrograms().contains(std::hash<std::string>()(path))) return {};
    const auto& settings = context.settings().fileSystem;
    const ComponentLimits limits{settings.maxMatches, settings.maxContentSize};
    const ProgressCheck checkProgress = [&context] { context.budget().checkTimeOccasionally(); };
    if (format.readFile != nullptr) {
        const std::optional<RandomAccessFile> file = openFile(path, context, result, KeySearch::ByCaller);
        if (!file) return {};
        return format.ofPrograms ? readProgram(format, *file, path, limits, checkProgress, context)
                                 : format.readFile(*file, path, limits, checkProgress);
    }
    const std::shared_ptr<const std::string> content = contentOf(path, context, result, KeySearch::ByCaller);
    return content ? format.readText(*content, path, limits, checkProgress) : ComponentList();
}

}  // namespace

LeafResult lookUpComponent(const Query& query, EvaluationContext& context) {
    LeafResult result;
    const std::string path(query.get(Attribute::Path));
    const ComponentFormat* const format = componentFormat(query.get(Attribute::Format));
    if (format == nullptr) {
        result.fail(EventCode::Unsupported, path,
                    "unknown format \"" + std::string(query.get(Attribute::Format)) + "\"");
        return result;
    }
    const ComponentList list = readComponents(*format, path, context, result);
    if (!list.problem.empty())
        result.fail(list.tooLarge ? EventCode::LimitBytes : EventCode::Parse, path, list.problem);
    if (list.tooMany) {
        const std::uint64_t limit = context.settings().fileSystem.maxMatches;
        result.fail(EventCode::LimitMatches, path, "more than " + std::to_string(limit) + " components");
    }
    for (const Component& component : list.components) {
        if (passes(query, component, path, result))
            keepItem(context.budget(), result, itemOf(component, path));
    }
    return result;
}

}  // namespace toolkit::quorvis
