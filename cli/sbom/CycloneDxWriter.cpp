#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "cli/sbom/BillWriter.h"
#include "cli/sbom/DocumentValues.h"
#include "cli/scan/PackageUrl.h"

namespace zavcli {

namespace {

using Json = nlohmann::ordered_json;

std::string textOf(const Json& json, int indent) {
    // Paths may contain bytes that are not UTF-8.
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

const char* typeOf(ComponentKind kind) {
    switch (kind) {
        case ComponentKind::OperatingSystem:
            return "operating-system";
        case ComponentKind::Product:
            return "application";
        case ComponentKind::SystemPackage:
        case ComponentKind::LanguagePackage:
            break;
    }
    return "library";
}

void addText(Json& json, const char* name, const std::string& value) {
    if (!value.empty()) json[name] = value;
}

Json fileJson(const HashedFile& file) {
    return {{"type", "file"},
            {"name", file.path},
            {"hashes",
             {{{"alg", "SHA-1"}, {"content", file.hashes.sha1}},
              {{"alg", "SHA-256"}, {"content", file.hashes.sha256}}}}};
}

class CycloneDxWriter {
  public:
    explicit CycloneDxWriter(const BillOfMaterials& bill) : bill_(bill) {
        for (const HashedFile& file : bill.files) files_.emplace(file.path, &file);
        for (const Component& component : bill.components) {
            if (!component.owner.empty()) contents_.emplace(component.owner, &component);
        }
    }

    std::string write(const DocumentTime& time) const {
        Json document = {{"$schema", "http://cyclonedx.org/schema/bom-1.6.schema.json"},
                         {"bomFormat", "CycloneDX"},
                         {"specVersion", "1.6"},
                         {"serialNumber", ""},
                         {"version", 1}};
        document["metadata"] = {
            {"tools",
             {{"components", {{{"type", "application"}, {"name", "zav"}, {"version", ZAV_CLI_VERSION}}}}}},
            {"component", componentJson(bill_.system)}};
        Json references = Json::array();
        Json components = Json::array();
        for (const Component& component : bill_.components) {
            if (!component.owner.empty()) continue;
            references.push_back(component.id);
            components.push_back(componentJson(component));
        }
        document["components"] = std::move(components);
        document["dependencies"] = {{{"ref", bill_.system.id}, {"dependsOn", std::move(references)}}};
        if (!bill_.complete)
            document["compositions"] = {{{"aggregate", "incomplete"}, {"assemblies", {bill_.system.id}}}};
        document["serialNumber"] = "urn:uuid:" + nameUuid(textOf(document, -1));
        if (time.chosen) document["metadata"]["timestamp"] = isoTime(time.time);
        return textOf(document, 2) + "\n";
    }

  private:
    Json componentJson(const Component& component) const {
        Json json = {{"type", typeOf(component.kind)}, {"bom-ref", component.id}};
        const std::string supplier = nameWithoutMail(component.supplier);
        if (!supplier.empty()) json["supplier"] = {{"name", supplier}};
        addName(json, component);
        addText(json, "version", component.version);
        addText(json, "description", component.description);
        if (isCpe23(component.cpe)) json["cpe"] = component.cpe;
        if (isCleanPackageUrl(component.purl)) json["purl"] = component.purl;
        if (isWebAddress(component.home))
            json["externalReferences"] = {{{"type", "website"}, {"url", component.home}}};
        for (const Field& property : component.properties)
            json["properties"].push_back({{"name", property.name}, {"value", property.value}});
        addContents(json, component);
        for (const Occurrence& occurrence : component.occurrences) {
            Json place = {{"location", occurrence.path}};
            addText(place, "additionalContext", occurrence.detail);
            json["evidence"]["occurrences"].push_back(std::move(place));
        }
        return json;
    }

    static void addName(Json& json, const Component& component) {
        const auto url =
            component.kind == ComponentKind::LanguagePackage ? parsePackageUrl(component.purl) : std::nullopt;
        if (url) addText(json, "group", url->nameSpace);
        json["name"] = url ? url->name : component.name;
    }

    void addContents(Json& json, const Component& component) const {
        const auto [begin, end] = contents_.equal_range(component.id);
        for (auto content = begin; content != end; ++content)
            json["components"].push_back(componentJson(*content->second));
        std::string last;
        for (const Occurrence& occurrence : component.occurrences) {
            const auto file = files_.find(occurrence.path);
            if (file == files_.end() || occurrence.path == last) continue;
            json["components"].push_back(fileJson(*file->second));
            last = occurrence.path;
        }
    }

    const BillOfMaterials& bill_;
    std::map<std::string, const HashedFile*> files_;
    std::multimap<std::string, const Component*> contents_;  // by owner
};

}  // namespace

std::string cycloneDxText(const BillOfMaterials& bill, const DocumentTime& time) {
    return CycloneDxWriter(bill).write(time);
}

}  // namespace zavcli
