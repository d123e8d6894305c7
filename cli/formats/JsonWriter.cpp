#include "cli/formats/JsonWriter.h"

#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/scan/ProductIdentity.h"
#include "cli/scan/ResultMetadata.h"

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

// The rights of the scanner decide what it can see.
void addPrivilege(Json& facts, const Instance& scanInfo) {
    const Field* const privileged = findField(scanInfo, "Privileged");
    if (privileged != nullptr) facts["privileged"] = privileged->value == "true";
}

Json object(const std::vector<Field>& fields) {
    Json object = Json::object();
    for (const Field& field : fields) object[field.name] = field.value;
    return object;
}

Json instances(const Group& group) {
    Json array = Json::array();
    for (const Instance& instance : group.instances) array.push_back(object(instance));
    return array;
}

Json status(const Group& group) {
    Json json = {{"status", statusWord(group.status.state)}};
    if (!group.status.reason.empty()) json["reason"] = group.status.reason;
    return json;
}

Json result(const MatchedSignature& match) {
    Json json = {{"guid", match.guid}};
    if (!match.name.empty()) json["name"] = match.name;
    const ProductIdentity identity = identityOf(match);
    if (!identity.cpe.empty()) json["cpe"] = identity.cpe;
    if (!identity.purl.empty()) json["purl"] = identity.purl;
    json["variables"] = object(match.variables);
    const Metadata metadata = readMetadata(match.metadata);
    if (!metadata.texts.empty()) json["metadata"] = object(metadata.texts);
    for (const std::vector<Field>& piece : metadata.evidence) json["evidence"].push_back(object(piece));
    return json;
}

Json warning(const Warning& warning) {
    Json json = object(warning.attributes);
    json["text"] = warning.text;
    return json;
}

// The words of a text, which are separated by blanks.
Json words(const std::string& text) {
    Json array = Json::array();
    std::istringstream stream(text);
    for (std::string word; stream >> word;) array.push_back(word);
    return array;
}

std::string written(const Json& document) {
    // Paths may contain bytes that are not UTF-8.
    return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string jsonText(const HardwareInventory& inventory) {
    Json statuses = Json::object();
    Json groups = Json::object();
    for (const Group& group : inventory.groups) {
        statuses[group.name] = status(group);
        groups[group.name] = instances(group);
    }
    Json scan = scanFacts(inventory.scan);
    addPrivilege(scan, inventory.scanInfo);
    return written(
        {{"scan", std::move(scan)}, {"status", std::move(statuses)}, {"groups", std::move(groups)}});
}

std::string jsonText(const SoftwareInventory& inventory) {
    Json results = Json::array();
    for (const MatchedSignature& match : inventory.results) results.push_back(result(match));
    Json warnings = Json::array();
    for (const Warning& each : inventory.warnings) warnings.push_back(warning(each));
    Json undecided = Json::array();
    for (const UndecidedSignature& signature : inventory.undecided) {
        Json json = {{"guid", signature.guid}};
        if (!signature.name.empty()) json["name"] = signature.name;
        if (!signature.because.empty()) json["because"] = words(signature.because);
        undecided.push_back(std::move(json));
    }
    return written({{"scan", scanFacts(inventory.scan)},
                    {"complete", inventory.complete},
                    {"results", std::move(results)},
                    {"undecided", std::move(undecided)},
                    {"warnings", std::move(warnings)}});
}

}  // namespace zavcli
