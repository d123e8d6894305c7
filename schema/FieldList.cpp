#include "schema/FieldList.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string_view>

#include "schema/Catalogue.h"

namespace schema {

namespace {

using Json = nlohmann::ordered_json;

Json jsonOf(const Field& field) {
    Json json = {{"name", field.name}, {"type", wordOf(field.type)}};
    if (!field.unit.empty()) json["unit"] = field.unit;
    for (std::string_view rest = field.choices; !rest.empty();) {
        const std::size_t end = std::min(rest.find('|'), rest.size());
        json["choices"].push_back(rest.substr(0, end));
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    json["list"] = field.list;
    json["key"] = field.key;
    json["volatile"] = field.isVolatile;
    json["privacy"] = wordOf(field.privacy);
    json["access"] = wordOf(field.access);
    json["liveOnly"] = field.liveOnly;
    json["liveSeesMore"] = field.liveSeesMore;
    json["meaning"] = field.meaning;
    json["source"] = field.source;
    return json;
}

Json jsonOf(const Group& group) {
    Json json = {{"id", group.id}, {"name", group.name}, {"element", group.element}, {"about", group.about}};
    if (!group.notOnLinux.empty()) json["notOnLinux"] = group.notOnLinux;
    json["fields"] = Json::array();
    for (const Field& field : group.fields) json["fields"].push_back(jsonOf(field));
    return json;
}

std::string typeText(const Field& field) {
    std::string text(wordOf(field.type));
    if (!field.choices.empty()) text.append(" ").append(field.choices);
    if (field.list) text += " list";
    if (!field.unit.empty()) text.append(", ").append(field.unit);
    return text;
}

std::string remarks(const Field& field) {
    std::string text;
    const auto add = [&text](bool applies, std::string_view remark) {
        if (applies) text.append(text.empty() ? "" : "; ").append(remark);
    };
    add(field.key, "key");
    add(field.isVolatile, "changes");
    add(field.access == Access::RootOnly, "root only");
    add(field.access == Access::RootSeesMore, "root sees more");
    add(field.liveOnly, "not in a tree");
    add(field.liveSeesMore, "less in a tree");
    add(field.privacy != Privacy::Public, "hashed by --sanitize");
    return text;
}

void appendRow(std::string& text, std::string_view name, std::size_t width, const Field& field) {
    text.append("  ").append(name).append(width - name.size(), ' ');
    text.append("  ").append(field.meaning);
    text.append(" (").append(typeText(field));
    const std::string notes = remarks(field);
    if (!notes.empty()) text.append("; ").append(notes);
    text.append(") [").append(field.source).append("]\n");
}

void appendGroup(std::string& text, const Group& group) {
    text.append(std::to_string(group.id)).append(" ").append(group.name).append("\n");
    text.append("  ").append(group.about.substr(0, group.about.find('\n'))).append("\n");
    if (!group.notOnLinux.empty()) text.append("  No Linux machine has this group.\n");
    std::size_t width = 0;
    for (const Field& field : group.fields) width = std::max(width, field.name.size());
    for (const Field& field : group.fields) appendRow(text, field.name, width, field);
}

}  // namespace

std::string_view wordOf(Type type) {
    switch (type) {
        case Type::Text:
            return "text";
        case Type::Count:
            return "count";
        case Type::Integer:
            return "integer";
        case Type::Decimal:
            return "decimal";
        case Type::Boolean:
            return "boolean";
        case Type::Time:
            return "time";
        case Type::Hex:
            return "hex";
        case Type::Uuid:
            return "uuid";
        case Type::Choice:
            return "choice";
        case Type::Ipv4Address:
            return "ipv4-address";
        case Type::Ipv6Address:
            return "ipv6-address";
        case Type::HardwareAddress:
            return "hardware-address";
    }
    return "";
}

std::string_view wordOf(Privacy privacy) {
    switch (privacy) {
        case Privacy::Public:
            return "public";
        case Privacy::Serial:
            return "serial";
        case Privacy::Address:
            return "address";
        case Privacy::Name:
            return "name";
        case Privacy::Path:
            return "path";
        case Privacy::Content:
            return "content";
    }
    return "";
}

std::string_view wordOf(Access access) {
    switch (access) {
        case Access::Everyone:
            return "everyone";
        case Access::RootSeesMore:
            return "root-sees-more";
        case Access::RootOnly:
            return "root-only";
    }
    return "";
}

std::string fieldText(std::span<const Group* const> groups) {
    std::string text;
    for (const Group* const group : groups) {
        if (!text.empty()) text += '\n';
        appendGroup(text, *group);
    }
    return text;
}

std::string fieldJson(std::span<const Group* const> groups) {
    Json json = {{"schemaVersion", kVersion}, {"groups", Json::array()}};
    for (const Group* const group : groups) json["groups"].push_back(jsonOf(*group));
    return json.dump(2) + "\n";
}

}  // namespace schema
