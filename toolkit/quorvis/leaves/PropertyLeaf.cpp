#include "toolkit/machine/text/ShellVariables.h"
#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

namespace {

std::optional<std::string> shellValue(std::string_view text, std::string_view key) {
    std::string value = ShellVariables(text).value(key);
    if (value.empty()) return std::nullopt;
    return value;
}

std::optional<std::string> jsonOrFail(std::string_view text, std::string_view key, const std::string& path,
                                      const ProgressCheck& checkProgress, LeafResult& result) {
    JsonValue found = jsonValue(text, key, checkProgress);
    if (found.damage)
        result.fail(EventCode::Parse, path, "damaged JSON at byte " + std::to_string(*found.damage));
    return std::move(found.value);
}

std::optional<std::string> valueOf(const Query& query, std::string_view text, const std::string& path,
                                   const ProgressCheck& checkProgress, LeafResult& result) {
    const std::string_view format = query.get(Attribute::Format);
    const std::string_view key = query.get(Attribute::Key);
    if (format == "properties") return propertyValue(text, key, checkProgress);
    if (format == "ini") return iniValue(text, query.get(Attribute::Section), key, checkProgress);
    if (format == "shell") return shellValue(text, key);
    if (format == "json") return jsonOrFail(text, key, path, checkProgress, result);
    result.fail(EventCode::Unsupported, path, "unknown format \"" + std::string(format) + "\"");
    return std::nullopt;
}

}  // namespace

LeafResult lookUpProperty(const Query& query, EvaluationContext& context) {
    LeafResult result;
    const std::string path(query.get(Attribute::Path));
    const std::shared_ptr<const std::string> content = contentOf(path, context, result);
    if (content == nullptr) return result;
    const ProgressCheck checkProgress = [&context] { context.budget().checkTimeOccasionally(); };
    const std::optional<std::string> value = valueOf(query, *content, path, checkProgress, result);
    if (!value || !passesValueTests(query, *value, path, result)) return result;
    Item item;
    item.source = path;
    item.set("value", value->substr(0, kMaxValueSize));
    keepItem(context.budget(), result, std::move(item));
    return result;
}

}  // namespace toolkit::quorvis
