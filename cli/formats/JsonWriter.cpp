#include "cli/formats/JsonWriter.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "cli/formats/JsonDocument.h"

namespace zavcli {

namespace {

using Json = nlohmann::ordered_json;

Json document(const HardwareInventory& inventory, JsonValues values) {
    Json statuses = Json::object();
    Json groups = Json::object();
    for (const Group& group : inventory.groups) {
        statuses[group.name] = statusJson(group.status);
        Json& instances = groups[group.name] = Json::array();
        for (const Instance& instance : group.instances)
            instances.push_back(instanceJson(group.name, instance, values));
    }
    return {{"scan", scanJson(inventory)}, {"status", std::move(statuses)}, {"groups", std::move(groups)}};
}

// Writes lines that begin with the host and the time.
class LineWriter {
  public:
    explicit LineWriter(const ScanFacts& scan) : lead_({{"host", scan.host}, {"time", scan.time}}) {}

    template <typename... Members>
    void add(Members&&... members) {
        Json line = lead_;
        (line.emplace(std::forward<Members>(members).first, std::forward<Members>(members).second), ...);
        text_ += lineText(line);
    }
    std::string text() { return std::move(text_); }

  private:
    Json lead_;
    std::string text_;
};

std::pair<const char*, Json> member(const char* name, Json value) {
    return {name, std::move(value)};
}

}  // namespace

std::string jsonText(const HardwareInventory& inventory, JsonValues values) {
    return indentedText(document(inventory, values));
}

std::string jsonLine(const HardwareInventory& inventory, JsonValues values) {
    return lineText(document(inventory, values));
}

std::string jsonText(const SoftwareInventory& inventory, JsonValues values) {
    Json results = Json::array();
    for (const MatchedSignature& match : inventory.results) results.push_back(resultJson(match, values));
    Json undecided = Json::array();
    for (const UndecidedSignature& signature : inventory.undecided)
        undecided.push_back(undecidedJson(signature));
    Json warnings = Json::array();
    for (const Warning& warning : inventory.warnings) warnings.push_back(warningJson(warning));
    return indentedText({{"scan", scanJson(inventory)},
                         {"complete", inventory.complete},
                         {"results", std::move(results)},
                         {"undecided", std::move(undecided)},
                         {"warnings", std::move(warnings)}});
}

std::string jsonLines(const HardwareInventory& inventory, JsonValues values) {
    LineWriter writer(inventory.scan);
    writer.add(member("scan", scanJson(inventory)));
    for (const Group& group : inventory.groups) {
        if (group.status.reason.empty())
            writer.add(member("group", group.name), member("status", statusWord(group.status.state)));
        else
            writer.add(member("group", group.name), member("status", statusWord(group.status.state)),
                       member("reason", group.status.reason));
        for (std::size_t i = 0; i < group.instances.size(); ++i)
            writer.add(member("group", group.name), member("instance", i),
                       member("fields", instanceJson(group.name, group.instances[i], values)));
    }
    return writer.text();
}

std::string jsonLines(const SoftwareInventory& inventory, JsonValues values) {
    LineWriter writer(inventory.scan);
    writer.add(member("scan", scanJson(inventory)), member("complete", inventory.complete));
    for (const MatchedSignature& match : inventory.results)
        writer.add(member("result", resultJson(match, values)));
    for (const UndecidedSignature& signature : inventory.undecided)
        writer.add(member("undecided", undecidedJson(signature)));
    for (const Warning& warning : inventory.warnings) writer.add(member("warning", warningJson(warning)));
    return writer.text();
}

}  // namespace zavcli
