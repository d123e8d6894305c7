#include "cli/formats/GroupListWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "cli/formats/CsvWriter.h"
#include "cli/terminal/PrintableText.h"
#include "schema/FieldList.h"

namespace zavcli {

namespace {

std::string_view abilityWord(const ListedGroup& listed) {
    return listed.ability.state == GroupState::Complete ? "gathered" : statusWord(listed.ability.state);
}

std::string mark(const ListedGroup& listed) {
    if (listed.ability.state == GroupState::Unsupported) return "  not implemented by this scanner";
    if (listed.ability.state != GroupState::NotApplicable) return "";
    return fmt::format("  not applicable here: {}", printable(reasonText(listed.ability.reason)));
}

}  // namespace

std::string groupTable(const std::vector<ListedGroup>& groups) {
    int width = 0;
    for (const ListedGroup& listed : groups) width = std::max(width, columnsOf(listed.group.name));
    std::string text = "id  name\n";
    for (const ListedGroup& listed : groups) {
        const std::string remark = mark(listed);
        const std::string name = remark.empty() ? listed.group.name : pad(listed.group.name, width);
        text += fmt::format("{:>2}  {}{}\n", listed.group.id, name, remark);
    }
    return text;
}

std::string groupJson(const std::vector<ListedGroup>& groups) {
    auto array = nlohmann::ordered_json::array();
    for (const ListedGroup& listed : groups) {
        nlohmann::ordered_json json = {
            {"id", listed.group.id}, {"name", listed.group.name}, {"status", abilityWord(listed)}};
        if (!listed.ability.reason.empty()) json["reason"] = listed.ability.reason;
        array.push_back(std::move(json));
    }
    return nlohmann::ordered_json{{"groups", array}}.dump(2) + "\n";
}

std::string groupCsv(const std::vector<ListedGroup>& groups) {
    std::string text = "id,name,status\r\n";
    for (const ListedGroup& listed : groups)
        text +=
            fmt::format("{},{},{}\r\n", listed.group.id, csvField(listed.group.name), abilityWord(listed));
    return text;
}

std::string fieldCsv(const std::vector<const schema::Group*>& groups) {
    std::string text = "group,field,type,unit,list,key,volatile,access,privacy,meaning\r\n";
    for (const schema::Group* const group : groups) {
        for (const schema::Field& field : group->fields) {
            text += fmt::format("{},{},{},{},{},{},{},{},{},{}\r\n", group->element, field.name,
                                schema::wordOf(field.type), csvField(std::string(field.unit)), field.list,
                                field.key, field.isVolatile, schema::wordOf(field.access),
                                schema::wordOf(field.privacy), csvField(std::string(field.meaning)));
        }
    }
    return text;
}

}  // namespace zavcli
