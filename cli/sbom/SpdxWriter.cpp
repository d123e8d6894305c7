#include <fmt/format.h>

#include <map>
#include <nlohmann/json.hpp>

#include "cli/sbom/BillWriter.h"
#include "cli/sbom/DocumentValues.h"

namespace zavcli {

namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kNoAssertion = "NOASSERTION";
constexpr const char* kDocument = "SPDXRef-DOCUMENT";
constexpr std::size_t kMaxNamedPlaces = 100;
constexpr std::size_t kMaxNameInIdentifier = 60;

std::string textOf(const Json& json, int indent) {
    // Paths may contain bytes that are not UTF-8.
    return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

// An identifier may only contain letters, digits, dots and hyphens, so a part of a hash makes it unique.
std::string identifierOf(const char* kind, const std::string& name, const std::string& id) {
    std::string plain = name.substr(0, kMaxNameInIdentifier);
    for (char& character : plain) {
        const bool allowed = (character >= 'a' && character <= 'z') ||
                             (character >= 'A' && character <= 'Z') ||
                             (character >= '0' && character <= '9') || character == '.';
        if (!allowed) character = '-';
    }
    Digest digest;
    digest.add(id);
    return fmt::format("SPDXRef-{}-{}-{}", kind, plain, digest.finish().sha256.substr(0, 16));
}

const char* wordOf(ComponentKind kind) {
    switch (kind) {
        case ComponentKind::OperatingSystem:
            return "OperatingSystem";
        case ComponentKind::SystemPackage:
            return "Package";
        case ComponentKind::Product:
            return "Product";
        case ComponentKind::LanguagePackage:
            break;
    }
    return "LanguagePackage";
}

// Null if the kind does not tell.
const char* purposeOf(ComponentKind kind) {
    switch (kind) {
        case ComponentKind::OperatingSystem:
            return "OPERATING_SYSTEM";
        case ComponentKind::Product:
            return "APPLICATION";
        case ComponentKind::LanguagePackage:
            return "LIBRARY";
        case ComponentKind::SystemPackage:
            break;
    }
    return nullptr;
}

std::string identifierOf(const Component& component) {
    return identifierOf(wordOf(component.kind), component.name, component.id);
}

std::string identifierOf(const HashedFile& file) {
    return identifierOf("File", file.path.substr(file.path.rfind('/') + 1), file.path);
}

// Parentheses would begin a mail address, and an agent is a single line. Some readers of the format do not decode what
// JSON escapes in it.
std::string agentOf(const std::string& supplier) {
    std::string name = nameWithoutMail(supplier);
    if (name.empty()) return kNoAssertion;
    for (char& character : name) {
        if (character == '(') character = '[';
        if (character == ')') character = ']';
        if (character == '"') character = '\'';
        if (character == '\\') character = '/';
        if (static_cast<unsigned char>(character) < ' ') character = ' ';
    }
    return "Organization: " + name;
}

std::string placesOf(const Component& component) {
    std::string text;
    std::size_t count = 0;
    for (const Occurrence& occurrence : component.occurrences) {
        if (++count > kMaxNamedPlaces)
            return text + fmt::format("; and {} more", component.occurrences.size() - kMaxNamedPlaces);
        text += (text.empty() ? "found in " : "; ") + occurrence.path;
        if (!occurrence.detail.empty()) text += " (" + occurrence.detail + ")";
    }
    return text;
}

std::string propertiesOf(const Component& component) {
    std::string text;
    for (const Field& property : component.properties)
        text += fmt::format("{}{}={}", text.empty() ? "" : "; ", property.name, property.value);
    return text;
}

Json referencesOf(const Component& component) {
    Json references = Json::array();
    if (isCpe23(component.cpe))
        references.push_back({{"referenceCategory", "SECURITY"},
                              {"referenceType", "cpe23Type"},
                              {"referenceLocator", component.cpe}});
    if (isCleanPackageUrl(component.purl))
        references.push_back({{"referenceCategory", "PACKAGE-MANAGER"},
                              {"referenceType", "purl"},
                              {"referenceLocator", component.purl}});
    return references;
}

Json packageOf(const Component& component) {
    Json json = {{"SPDXID", identifierOf(component)}, {"name", component.name}};
    const auto add = [&json](const char* name, const std::string& value) {
        if (!value.empty()) json[name] = value;
    };
    add("versionInfo", component.version);
    json["supplier"] = agentOf(component.supplier);
    json["downloadLocation"] = kNoAssertion;
    json["filesAnalyzed"] = false;
    if (isWebAddress(component.home)) json["homepage"] = component.home;
    add("sourceInfo", placesOf(component));
    json["licenseConcluded"] = kNoAssertion;
    json["licenseDeclared"] = kNoAssertion;
    json["copyrightText"] = kNoAssertion;
    add("summary", component.description);
    add("comment", propertiesOf(component));
    Json references = referencesOf(component);
    if (!references.empty()) json["externalRefs"] = std::move(references);
    if (const char* const purpose = purposeOf(component.kind)) json["primaryPackagePurpose"] = purpose;
    return json;
}

Json fileOf(const HashedFile& file) {
    return {{"SPDXID", identifierOf(file)},
            {"fileName", "." + file.path},
            {"checksums",
             {{{"algorithm", "SHA1"}, {"checksumValue", file.hashes.sha1}},
              {{"algorithm", "SHA256"}, {"checksumValue", file.hashes.sha256}}}},
            {"licenseConcluded", kNoAssertion},
            {"licenseInfoInFiles", Json::array({kNoAssertion})},
            {"copyrightText", kNoAssertion}};
}

class Relationships {
  public:
    void add(const std::string& from, const char* type, const std::string& to,
             const char* comment = nullptr) {
        Json relationship = {{"spdxElementId", from}, {"relationshipType", type}, {"relatedSpdxElement", to}};
        if (comment != nullptr) relationship["comment"] = comment;
        list_.push_back(std::move(relationship));
    }
    Json take() { return std::move(list_); }

  private:
    Json list_ = Json::array();
};

Json relationshipsOf(const BillOfMaterials& bill) {
    Relationships relationships;
    std::map<std::string, std::string> owners;
    for (const Component& component : bill.components) owners[component.id] = identifierOf(component);
    std::map<std::string, std::string> files;
    for (const HashedFile& file : bill.files) files[file.path] = identifierOf(file);
    const std::string system = identifierOf(bill.system);
    relationships.add(kDocument, "DESCRIBES", system);
    for (const Component& component : bill.components) {
        const std::string id = identifierOf(component);
        relationships.add(component.owner.empty() ? system : owners.at(component.owner), "CONTAINS", id);
        std::string last;
        for (const Occurrence& occurrence : component.occurrences) {
            const auto file = files.find(occurrence.path);
            if (file == files.end() || occurrence.path == last) continue;
            // A package whose files were not all analyzed must not contain files.
            relationships.add(file->second, "OTHER", id, "The file is evidence of the package.");
            last = occurrence.path;
        }
    }
    return relationships.take();
}

}  // namespace

std::string spdxText(const BillOfMaterials& bill, const DocumentTime& time) {
    const std::string name =
        bill.system.version.empty() ? bill.system.name : bill.system.name + "-" + bill.system.version;
    Json document = {{"spdxVersion", "SPDX-2.3"},
                     {"dataLicense", "CC0-1.0"},
                     {"SPDXID", kDocument},
                     {"name", name},
                     {"documentNamespace", ""},
                     {"creationInfo", {{"creators", Json::array({"Tool: zav-" ZAV_CLI_VERSION})}}}};
    if (!bill.complete)
        document["comment"] = "Something could not be read, so software may be missing from this document.";
    document["packages"] = Json::array({packageOf(bill.system)});
    for (const Component& component : bill.components) document["packages"].push_back(packageOf(component));
    for (const HashedFile& file : bill.files) document["files"].push_back(fileOf(file));
    document["relationships"] = relationshipsOf(bill);
    document["documentNamespace"] = "https://spdx.org/spdxdocs/zav-" + nameUuid(textOf(document, -1));
    document["creationInfo"]["created"] = isoTime(time.time);
    return textOf(document, 2) + "\n";
}

}  // namespace zavcli
