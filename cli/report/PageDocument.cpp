#include "cli/report/PageDocument.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "cli/diff/InventoryDiff.h"
#include "cli/formats/DiffWriter.h"
#include "cli/formats/JsonDocument.h"
#include "schema/Catalogue.h"
#include "schema/FieldList.h"

namespace zavcli {

namespace {

using Json = nlohmann::ordered_json;

Json hardwareJson(const SavedInventory& inventory) {
    Json statuses = Json::object();
    Json groups = Json::object();
    for (const Group& group : inventory.groups) {
        statuses[group.name] = statusJson(group.status);
        if (!group.status.reason.empty()) statuses[group.name]["text"] = reasonText(group.status.reason);
        Json& instances = groups[group.name] = Json::array();
        for (const Instance& instance : group.instances)
            instances.push_back(instanceJson(group.name, instance, JsonValues::Text));
    }
    Json scan = {{"time", inventory.time}, {"ofTree", inventory.ofTree}, {"sanitized", inventory.sanitized}};
    if (inventory.privileged) scan["privileged"] = *inventory.privileged;
    return {{"scan", std::move(scan)}, {"status", std::move(statuses)}, {"groups", std::move(groups)}};
}

Json softwareJson(const SoftwareInventory& inventory) {
    Json json = {{"scan", scanJson(inventory)},
                 {"complete", inventory.complete},
                 {"results", Json::array()},
                 {"undecided", Json::array()},
                 {"warnings", Json::array()}};
    for (const MatchedSignature& match : inventory.results)
        json["results"].push_back(resultJson(match, JsonValues::Text));
    for (const UndecidedSignature& signature : inventory.undecided)
        json["undecided"].push_back(undecidedJson(signature));
    for (const Warning& warning : inventory.warnings) json["warnings"].push_back(warningJson(warning));
    return json;
}

// What the catalogue says of the groups of an inventory.
Json catalogueJson(const SavedInventory& inventory) {
    Json catalogue = Json::object();
    for (const Group& group : inventory.groups) {
        const schema::Group* const described = schema::findGroup(group.name);
        if (described == nullptr) continue;
        const schema::Group* const one[] = {described};
        catalogue[group.name] = Json::parse(schema::fieldJson(one)).at("groups").at(0);
    }
    return catalogue;
}

Json changesJson(const SavedInventory& before, const SavedInventory& after) {
    return Json::parse(diffJson(before, after, compareInventories(before, after)));
}

// In JSON, these characters are only in strings, where an escape stands for the same character.
std::string withoutMarkup(const std::string& json) {
    std::string text;
    text.reserve(json.size());
    for (const char character : json) {
        switch (character) {
            case '<':
                text += "\\u003c";
                break;
            case '>':
                text += "\\u003e";
                break;
            case '&':
                text += "\\u0026";
                break;
            default:
                text += character;
        }
    }
    return text;
}

}  // namespace

std::string pageDocument(const PageContent& content) {
    Json document = {
        {"hardware", nullptr}, {"software", nullptr}, {"catalogue", Json::object()}, {"changes", nullptr}};
    if (content.hardware != nullptr) {
        document["hardware"] = hardwareJson(*content.hardware);
        document["catalogue"] = catalogueJson(*content.hardware);
        if (content.earlier != nullptr)
            document["changes"] = changesJson(*content.earlier, *content.hardware);
    }
    if (content.software != nullptr) document["software"] = softwareJson(*content.software);
    constexpr bool kOnlyAscii = true;
    return withoutMarkup(document.dump(-1, ' ', kOnlyAscii, Json::error_handler_t::replace));
}

}  // namespace zavcli
