#include "cli/formats/DiffWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/terminal/PrintableText.h"

namespace zavcli {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::array<std::pair<Needs, std::string_view>, 3> kSections{
    {{Needs::Nothing, ""},
     {Needs::Root, "Seen with the rights of root only:\n"},
     {Needs::LiveMachine, "Known of a running machine only:\n"}}};

std::string heading(std::string_view mark, const SavedInventory& inventory) {
    std::string text = fmt::format("{} {}", mark, printable(inventory.file));
    if (!inventory.time.empty()) text += "  " + printable(inventory.time);
    if (inventory.privileged) text += *inventory.privileged ? "  by root" : "  by another user than root";
    if (inventory.ofTree) text += "  of a directory";
    return text + "\n";
}

std::vector<std::string> partsOf(std::string_view values) {
    std::vector<std::string> parts;
    while (!values.empty()) {
        parts.emplace_back(values.substr(0, values.find(';')));
        values.remove_prefix(std::min(parts.back().size() + 1, values.size()));
    }
    std::ranges::sort(parts);
    return parts;
}

std::string listed(const std::vector<std::string>& parts, const std::vector<std::string>& others,
                   std::string_view mark) {
    std::vector<std::string> only;
    std::ranges::set_difference(parts, others, std::back_inserter(only));
    std::string text;
    for (const std::string& part : only) text += fmt::format(" {}{}", mark, printable(part));
    return text;
}

std::string shown(const std::string& value) {
    return value.empty() ? "(empty)" : printable(value);
}

std::string line(const ValueChange& change) {
    if (change.list && !change.before.empty() && !change.after.empty()) {
        const std::vector<std::string> before = partsOf(change.before);
        const std::vector<std::string> after = partsOf(change.after);
        const std::string parts = listed(before, after, "-") + listed(after, before, "+");
        // Without any, only the order differs.
        if (!parts.empty()) return fmt::format("      {}:{}\n", printable(change.field), parts);
    }
    return fmt::format("      {}: {} -> {}\n", printable(change.field), shown(change.before),
                       shown(change.after));
}

std::string lines(const InstanceChange& change, Needs needs) {
    const std::string label = change.label.empty() ? "(without a name)" : printable(change.label);
    if (change.kind != InstanceChange::Kind::Changed) {
        if (change.needs != needs) return "";
        return fmt::format("  {} {}\n", change.kind == InstanceChange::Kind::Added ? '+' : '-', label);
    }
    std::string values;
    for (const ValueChange& value : change.values) {
        if (value.needs == needs) values += line(value);
    }
    if (values.empty()) return "";
    return change.label.empty() ? values : fmt::format("    {}\n{}", label, values);
}

std::string section(const InventoryDiff& diff, Needs needs) {
    std::string text;
    for (const GroupChanges& group : diff.groups) {
        std::string changes;
        for (const InstanceChange& change : group.instances) changes += lines(change, needs);
        if (!changes.empty()) text += fmt::format("\n{}\n{}", printable(group.group), changes);
    }
    return text;
}

Json object(const Instance& fields) {
    Json object = Json::object();
    for (const Field& field : fields) object[field.name] = field.value;
    return object;
}

void addNeeds(Json& json, Needs needs) {
    if (needs == Needs::Root) json["needs"] = "root";
    if (needs == Needs::LiveMachine) json["needs"] = "live";
}

Json changeJson(const InstanceChange& change) {
    Json json = {{"key", object(change.key)}, {"label", change.label}};
    if (change.kind != InstanceChange::Kind::Changed) {
        json["fields"] = object(change.fields);
        addNeeds(json, change.needs);
        return json;
    }
    Json values = Json::object();
    for (const ValueChange& value : change.values) {
        Json& entry = values[value.field] = {{"old", value.before}, {"new", value.after}};
        addNeeds(entry, value.needs);
    }
    json["fields"] = std::move(values);
    return json;
}

const char* member(InstanceChange::Kind kind) {
    switch (kind) {
        case InstanceChange::Kind::Added:
            return "added";
        case InstanceChange::Kind::Removed:
            return "removed";
        case InstanceChange::Kind::Changed:
            break;
    }
    return "changed";
}

Json sourceJson(const SavedInventory& inventory) {
    Json json = {{"file", inventory.file}};
    if (!inventory.time.empty()) json["time"] = inventory.time;
    if (inventory.privileged) json["privileged"] = *inventory.privileged;
    return json;
}

}  // namespace

std::string diffText(const SavedInventory& before, const SavedInventory& after, const InventoryDiff& diff) {
    if (diff.groups.empty()) return "";
    std::string text = heading("---", before) + heading("+++", after);
    for (const auto& [needs, title] : kSections) {
        const std::string changes = section(diff, needs);
        if (changes.empty()) continue;
        if (!title.empty()) text += fmt::format("\n{}", title);
        text += changes;
    }
    return text;
}

std::string diffJson(const SavedInventory& before, const SavedInventory& after, const InventoryDiff& diff) {
    Json groups = Json::object();
    for (const GroupChanges& group : diff.groups) {
        Json& changes = groups[group.group] = {
            {"added", Json::array()}, {"removed", Json::array()}, {"changed", Json::array()}};
        for (const InstanceChange& change : group.instances)
            changes[member(change.kind)].push_back(changeJson(change));
    }
    const Json document = {{"old", sourceJson(before)},   {"new", sourceJson(after)},
                           {"same", diff.groups.empty()}, {"machineDiffers", diff.machineDiffers()},
                           {"groups", std::move(groups)}, {"notes", diff.notes}};
    // A file name may contain bytes that are not UTF-8.
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace zavcli
