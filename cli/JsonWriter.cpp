#include "cli/JsonWriter.h"

#include <nlohmann/json.hpp>

namespace zavcli {

namespace {

using Json = nlohmann::ordered_json;

Json scanFacts(const ScanFacts& scan) {
    Json facts = {{"program", scan.program},
                  {"time", scan.time},
                  {"milliseconds", scan.milliseconds},
                  {"toolkit", scan.toolkit}};
    if (!scan.root.empty()) facts["root"] = scan.root;
    return facts;
}

Json instances(const Group& group) {
    Json array = Json::array();
    for (const Instance& instance : group.instances) {
        Json object = Json::object();
        for (const Field& field : instance) object[field.name] = field.value;
        array.push_back(std::move(object));
    }
    return array;
}

}  // namespace

std::string jsonText(const Inventory& inventory) {
    Json groups = Json::object();
    for (const Group& group : inventory.groups) groups[group.name] = instances(group);
    const Json document = {{"scan", scanFacts(inventory.scan)}, {"groups", std::move(groups)}};
    // Paths may hold bytes that are no UTF-8.
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace zavcli
