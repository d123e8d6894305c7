#include "cli/formats/JsonDocument.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string_view>

#include "cli/scan/ProductIdentity.h"
#include "cli/scan/ResultMetadata.h"
#include "schema/Catalogue.h"
#include "schema/FieldForm.h"

namespace zavcli {

namespace {

using Json = nlohmann::ordered_json;

Json factsJson(const ScanFacts& scan) {
    Json facts = {{"program", scan.program},
                  {"time", scan.time},
                  {"milliseconds", scan.milliseconds},
                  {"toolkit", scan.toolkit}};
    if (!scan.root.empty()) facts["root"] = scan.root;
    if (!scan.host.empty()) facts["host"] = scan.host;
    return facts;
}

template <typename Number>
Json numberJson(std::string_view text) {
    Number value{};
    std::from_chars(text.data(), text.data() + text.size(), value);
    return value;
}

// REQUIRES: the value has the form of the type.
Json typedScalar(schema::Type type, std::string_view value) {
    switch (type) {
        case schema::Type::Count:
        case schema::Type::Integer:
            return numberJson<std::int64_t>(value);
        case schema::Type::Decimal:
            return numberJson<double>(value);
        case schema::Type::Boolean:
            return value == "true";
        default:
            return value;
    }
}

// `field` is null if the catalogue does not have it.
Json typedValue(const schema::Field* field, std::string_view value) {
    if (value.empty()) return nullptr;
    if (field == nullptr) return value;
    const schema::Type type = schema::hasForm(*field, value) ? field->type : schema::Type::Text;
    if (!field->list) return typedScalar(type, value);
    Json array = Json::array();
    for (std::size_t begin = 0; begin <= value.size();) {
        const std::size_t end = std::min(value.find(';', begin), value.size());
        array.push_back(typedScalar(type, value.substr(begin, end - begin)));
        begin = end + 1;
    }
    return array;
}

Json object(const std::vector<Field>& fields, JsonValues values = JsonValues::Text) {
    Json json = Json::object();
    for (const Field& field : fields)
        json[field.name] = values == JsonValues::Text ? Json(field.value) : typedValue(nullptr, field.value);
    return json;
}

// The words of a text, which are separated by blanks.
Json words(const std::string& text) {
    Json array = Json::array();
    std::istringstream stream(text);
    for (std::string word; stream >> word;) array.push_back(word);
    return array;
}

constexpr auto kInvalidBytes = Json::error_handler_t::replace;

}  // namespace

Json scanJson(const HardwareInventory& inventory) {
    Json facts = factsJson(inventory.scan);
    // The rights of the scanner decide what it can see.
    const Field* const privileged = findField(inventory.scanInfo, "Privileged");
    if (privileged != nullptr) facts["privileged"] = privileged->value == "true";
    return facts;
}

Json scanJson(const SoftwareInventory& inventory) {
    return factsJson(inventory.scan);
}

Json statusJson(const GroupStatus& status) {
    Json json = {{"status", statusWord(status.state)}};
    if (!status.reason.empty()) json["reason"] = status.reason;
    return json;
}

Json instanceJson(const std::string& group, const Instance& instance, JsonValues values) {
    if (values == JsonValues::Text) return object(instance);
    const schema::Group* const described = schema::findGroup(group);
    Json json = Json::object();
    for (const Field& field : instance) {
        const schema::Field* const definition =
            described == nullptr ? nullptr : schema::findField(*described, field.name);
        json[field.name] = typedValue(definition, field.value);
    }
    return json;
}

Json resultJson(const MatchedSignature& match, JsonValues values) {
    Json json = {{"guid", match.guid}};
    if (!match.name.empty()) json["name"] = match.name;
    const ProductIdentity identity = identityOf(match);
    if (!identity.cpe.empty()) json["cpe"] = identity.cpe;
    if (!identity.purl.empty()) json["purl"] = identity.purl;
    json["variables"] = object(match.variables, values);
    const Metadata metadata = readMetadata(match.metadata);
    if (!metadata.texts.empty()) json["metadata"] = object(metadata.texts, values);
    for (const std::vector<Field>& piece : metadata.evidence)
        json["evidence"].push_back(object(piece, values));
    return json;
}

Json undecidedJson(const UndecidedSignature& signature) {
    Json json = {{"guid", signature.guid}};
    if (!signature.name.empty()) json["name"] = signature.name;
    if (!signature.because.empty()) json["because"] = words(signature.because);
    return json;
}

Json warningJson(const Warning& warning) {
    Json json = object(warning.attributes);
    json["text"] = warning.text;
    return json;
}

std::string indentedText(const Json& document) {
    return document.dump(2, ' ', false, kInvalidBytes) + "\n";
}

std::string lineText(const Json& document) {
    return document.dump(-1, ' ', false, kInvalidBytes) + "\n";
}

}  // namespace zavcli
