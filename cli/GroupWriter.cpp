#include "cli/GroupWriter.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "cli/CsvWriter.h"

namespace zavcli {

std::string groupTable(const std::vector<GroupName>& groups) {
    std::string text = "id  name\n";
    for (const GroupName& group : groups) text += fmt::format("{:>2}  {}\n", group.id, group.name);
    return text;
}

std::string groupJson(const std::vector<GroupName>& groups) {
    auto array = nlohmann::ordered_json::array();
    for (const GroupName& group : groups) array.push_back({{"id", group.id}, {"name", group.name}});
    return nlohmann::ordered_json{{"groups", array}}.dump(2) + "\n";
}

std::string groupCsv(const std::vector<GroupName>& groups) {
    std::string text = "id,name\r\n";
    for (const GroupName& group : groups) text += fmt::format("{},{}\r\n", group.id, csvField(group.name));
    return text;
}

}  // namespace zavcli
