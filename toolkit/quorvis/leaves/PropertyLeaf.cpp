#include "kest/Ascii.h"
#include "toolkit/machine/text/ShellVariables.h"
#include "toolkit/quorvis/formats/Records.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

namespace {

std::optional<std::string> shellValue(const ShellVariables& variables, std::string_view key) {
    std::string value = variables.value(key);
    if (value.empty()) return std::nullopt;
    return value;
}

Records readShell(std::string_view text, const Query& query) {
    const ShellVariables variables(text);
    Records found;
    Record record;
    std::optional<std::string> item = shellValue(variables, query.get(Attribute::Key));
    if (!item) return found;
    record.items.push_back(std::move(*item));
    for (const NamedKey& named : query.keys()) {
        std::optional<std::string> value = shellValue(variables, named.key);
        if (!value && !named.optional) return found;
        record.values.push_back(std::move(value));
    }
    found.records.push_back(std::move(record));
    return found;
}

// "@" stands for the name of the record, if there are records.
RecordKey keyOf(const Query& query, std::string_view key, bool required) {
    const std::string_view format = query.get(Attribute::Format);
    if (key == "@" && query.has(Attribute::Each)) return {{}, true, required};
    if (isTreeFormat(format)) return {parseKeySteps(key), false, required};
    const bool anyCase = format == "headers" || format == "manifest";
    return {{{anyCase ? kest::lowerCase(key) : std::string(key), false}}, false, required};
}

// The steps to the records.
KeySteps wayOf(const Query& query) {
    const std::string_view format = query.get(Attribute::Format);
    if (isTreeFormat(format))
        return query.has(Attribute::Each) ? parseKeySteps(query.get(Attribute::Each)) : KeySteps();
    if (!hasSections(format)) return {};
    if (query.has(Attribute::Each)) return {{"", true}};
    const bool paragraphs = format == "headers" || format == "manifest";
    return {{paragraphs ? "0" : std::string(query.get(Attribute::Section)), false}};
}

RecordRequest requestOf(const Query& query, std::size_t limit) {
    RecordRequest request;
    request.each = wayOf(query);
    request.keys.push_back(keyOf(query, query.get(Attribute::Key), true));
    for (const NamedKey& named : query.keys())
        request.keys.push_back(keyOf(query, named.key, !named.optional));
    request.all = query.get(Attribute::Values) == "all";
    request.emptyClears = query.get(Attribute::Format) == "systemd";
    request.limit = limit;
    return request;
}

Records read(const Query& query, std::string_view text, EvaluationContext& context) {
    if (query.get(Attribute::Format) == "shell") return readShell(text, query);
    const RecordRequest request = requestOf(query, context.settings().fileSystem.maxMatches);
    return readRecords(query.get(Attribute::Format), text, request,
                       [&context] { context.budget().checkTimeOccasionally(); });
}

Item itemOf(const Query& query, const std::string& path, std::string_view value, const Record& record) {
    Item item;
    item.source = path;
    item.set("value", std::string(value.substr(0, kMaxValueSize)));
    for (std::size_t i = 0; i < query.keys().size(); ++i) {
        if (record.values[i]) item.set(query.keys()[i].name, record.values[i]->substr(0, kMaxValueSize));
    }
    return item;
}

}  // namespace

LeafResult lookUpProperty(const Query& query, EvaluationContext& context) {
    LeafResult result;
    const std::string path(query.get(Attribute::Path));
    const std::string_view format = query.get(Attribute::Format);
    if (!isPropertyFormat(format)) {
        result.fail(EventCode::Unsupported, path, "unknown format \"" + std::string(format) + "\"");
        return result;
    }
    const std::shared_ptr<const std::string> content = contentOf(path, context, result);
    if (content == nullptr) return result;
    const Records found = read(query, *content, context);
    if (!found.problem.empty())
        result.fail(found.tooLarge ? EventCode::LimitBytes : EventCode::Parse, path, found.problem);
    if (found.tooMany) {
        const std::uint64_t limit = context.settings().fileSystem.maxMatches;
        result.fail(EventCode::LimitMatches, path, "more than " + std::to_string(limit) + " matches");
    }
    for (const Record& record : found.records) {
        for (const std::string& value : record.items) {
            if (passesValueTests(query, value, path, result))
                keepItem(context.budget(), result, itemOf(query, path, value, record));
        }
    }
    return result;
}

}  // namespace toolkit::quorvis
