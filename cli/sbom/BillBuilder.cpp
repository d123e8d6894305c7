#include "cli/sbom/BillBuilder.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "cli/scan/PackageUrl.h"
#include "cli/scan/ProductIdentity.h"
#include "cli/scan/ResultMetadata.h"

namespace zavcli {

namespace {

const Group* groupNamed(const HardwareInventory& hardware, std::string_view name) {
    const auto found = std::find_if(hardware.groups.begin(), hardware.groups.end(),
                                    [name](const Group& group) { return group.name == name; });
    return found == hardware.groups.end() ? nullptr : &*found;
}

void addProperty(Component& component, const char* name, const std::string& value) {
    if (!value.empty()) component.properties.push_back({name, value});
}

std::string firstOf(std::initializer_list<std::string> values) {
    const auto* const found =
        std::find_if(values.begin(), values.end(), [](const std::string& value) { return !value.empty(); });
    return found == values.end() ? "" : *found;
}

Component systemOf(const HardwareInventory& hardware) {
    const Group* const group = groupNamed(hardware, kSystemGroup);
    const Instance system =
        group == nullptr || group->instances.empty() ? Instance() : group->instances.front();
    Component component;
    component.kind = ComponentKind::OperatingSystem;
    component.id = "operating-system";
    component.name = firstOf({valueOf(system, "Id"), valueOf(system, "Name"), "unknown"});
    component.version = firstOf({valueOf(system, "VersionId"), valueOf(system, "BuildId")});
    component.description = valueOf(system, "Caption");
    addProperty(component, "zav:architecture", valueOf(system, "Architecture"));
    addProperty(component, "zav:kernel", valueOf(system, "Version"));
    return component;
}

// dpkg also lists removed packages whose configuration is left.
bool isInstalled(const Instance& package) {
    return valueOf(package, "PackageFormat") != "dpkg" || valueOf(package, "Status").ends_with(" installed");
}

Component packageOf(const Instance& instance) {
    Component component;
    component.kind = ComponentKind::SystemPackage;
    component.name = valueOf(instance, "Name");
    component.version = valueOf(instance, "VersionString");
    component.supplier = valueOf(instance, "Manufacturer");
    component.description = valueOf(instance, "Description");
    const std::string id = valueOf(instance, "InstanceID");
    if (parsePackageUrl(id)) component.purl = id;
    component.id = firstOf({id, fmt::format("package:{}@{}", component.name, component.version)});
    addProperty(component, "zav:architecture", valueOf(instance, "Architecture"));
    addProperty(component, "zav:format", valueOf(instance, "PackageFormat"));
    addProperty(component, "zav:source", valueOf(instance, "Source"));
    return component;
}

std::vector<Occurrence> occurrencesOf(const ProductIdentity& identity, const Metadata& metadata) {
    std::vector<Occurrence> occurrences;
    for (const std::vector<Field>& evidence : metadata.evidence) {
        // The database of a package manager is not a part of the product.
        if (valueOf(evidence, "kind") == "package") continue;
        std::string detail = valueOf(evidence, "kind");
        for (const char* name : {"name", "version"}) {
            const std::string value = valueOf(evidence, name);
            if (!value.empty()) detail += " " + value;
        }
        const std::string path = valueOf(evidence, "source");
        const std::string within = path + "!/";
        if (identity.place.starts_with(within)) detail += " at " + identity.place.substr(within.size());
        if (!path.empty()) occurrences.push_back({path, std::move(detail)});
    }
    if (occurrences.empty() && !identity.place.empty()) occurrences.push_back({identity.place, ""});
    return occurrences;
}

// What identifies a package among those of the system, whatever else its package URL contains.
using PackageKey = std::tuple<std::string, std::string, std::string, std::string>;

std::optional<PackageKey> keyOf(const std::string& purl) {
    const std::optional<PackageUrl> url = parsePackageUrl(purl);
    if (!url) return std::nullopt;
    return PackageKey{url->type, url->name, url->version, valueOf(url->qualifiers, "arch")};
}

class BillBuilder {
  public:
    void addPackages(const HardwareInventory& hardware) {
        const Group* const group = groupNamed(hardware, kPackagesGroup);
        if (group == nullptr) return;
        for (const Instance& instance : group->instances) {
            if (!isInstalled(instance)) continue;
            Component package = packageOf(instance);
            if (const auto key = keyOf(package.purl)) packages_.emplace(*key, package.id);
            names_.emplace(package.name, package.id);
            add(std::move(package));
        }
    }

    void addResults(const SoftwareInventory& software) {
        for (const MatchedSignature& match : software.results) readResult(match);
        for (std::size_t i = 0; i < results_.size(); ++i) identifierOf(i, 0);
        for (Result& result : results_) add(std::move(result.component));
    }

    std::vector<Component> take() {
        std::vector<Component> components;
        for (auto& [key, component] : components_) {
            std::sort(component.occurrences.begin(), component.occurrences.end());
            component.occurrences.erase(
                std::unique(component.occurrences.begin(), component.occurrences.end()),
                component.occurrences.end());
            components.push_back(std::move(component));
        }
        return components;
    }

  private:
    // A result whose component does not have its final identifier yet.
    struct Result {
        Component component;
        std::pair<std::string, std::string> container;  // the signature and the place of what contains it
        bool identified = false;
    };

    void readResult(const MatchedSignature& match) {
        const ProductIdentity identity = identityOf(match);
        // The file that describes the operating system, which is a component already.
        if (identity.place.ends_with("/os-release")) return;
        Component component = isLanguagePackage(match) ? languagePackage(identity) : product(match, identity);
        component.version = firstOf({identity.version, component.version});
        component.supplier = identity.publisher;
        component.home = identity.home;
        component.cpe = identity.cpe;
        component.purl = identity.purl;
        component.owner = ownerOf(identity);
        component.occurrences = occurrencesOf(identity, readMetadata(match.metadata));
        addProperty(component, "zav:signature", match.guid);
        addProperty(component, "zav:package",
                    identity.packaging == Packaging::NotOwned ? "none" : identity.package);
        // What was unpacked into an archive has the same place as the archive, but is contained in it.
        const std::string container = valueOf(match.variables, "container");
        if (container != identity.place)
            places_.emplace(std::pair(match.guid, identity.place), results_.size());
        results_.push_back({std::move(component), {match.guid, container}, false});
    }

    // The identifier of the result's component. What a program or archive contains has its identifier at the end.
    const std::string& identifierOf(std::size_t index, int depth) {
        constexpr int kMaxDepth = 8;
        Result& result = results_[index];
        const auto container = places_.find(result.container);
        std::string owner;
        if (container != places_.end() && container->second != index && depth < kMaxDepth)
            owner = identifierOf(container->second, depth + 1);
        Component& component = result.component;
        if (std::exchange(result.identified, true)) return component.id;
        const bool contained = !owner.empty();
        if (contained) component.owner = std::move(owner);
        const bool several = contained || component.kind == ComponentKind::LanguagePackage;
        if (several && !component.owner.empty()) component.id += " in " + component.owner;
        return component.id;
    }

    static Component languagePackage(const ProductIdentity& identity) {
        Component component;
        const std::optional<PackageUrl> url = parsePackageUrl(identity.purl);
        component.kind = ComponentKind::LanguagePackage;
        component.id = identity.purl;
        component.name = url->nameSpace.empty() ? url->name : url->nameSpace + "/" + url->name;
        component.version = url->version;
        return component;
    }

    static Component product(const MatchedSignature& match, const ProductIdentity& identity) {
        Component component;
        component.kind = ComponentKind::Product;
        component.id = fmt::format("{}@{}:{}", match.guid, identity.version, identity.place);
        component.name = identity.name;
        return component;
    }

    std::string ownerOf(const ProductIdentity& identity) const {
        if (identity.packaging != Packaging::Owned) return "";
        if (const auto key = keyOf(identity.package)) {
            const auto found = packages_.find(*key);
            return found == packages_.end() ? "" : found->second;
        }
        // A bare name says which package it is only if no other package has it.
        const auto [begin, end] = names_.equal_range(identity.package);
        return begin != end && std::next(begin) == end ? begin->second : "";
    }

    // Merges the component with one of the same kind and identifier.
    void add(Component component) {
        const auto [known, isNew] =
            components_.try_emplace({component.kind, component.id}, std::move(component));
        if (isNew) return;
        known->second.occurrences.insert(known->second.occurrences.end(), component.occurrences.begin(),
                                         component.occurrences.end());
    }

    std::vector<Result> results_;
    std::map<std::pair<std::string, std::string>, std::size_t> places_;  // signature and place of results_
    std::map<std::pair<ComponentKind, std::string>, Component> components_;
    std::map<PackageKey, std::string> packages_;     // identifiers of system packages
    std::multimap<std::string, std::string> names_;  // the same, by name
};

bool isRead(const HardwareInventory& hardware, std::string_view name) {
    const Group* const group = groupNamed(hardware, name);
    return group != nullptr &&
           (group->status.state == GroupState::Complete || group->status.state == GroupState::NotApplicable);
}

}  // namespace

BillOfMaterials makeBill(const HardwareInventory& hardware, const SoftwareInventory& software) {
    BillBuilder builder;
    builder.addPackages(hardware);
    builder.addResults(software);
    BillOfMaterials bill;
    bill.system = systemOf(hardware);
    bill.components = builder.take();
    bill.complete = software.complete && isRead(hardware, kPackagesGroup);
    return bill;
}

std::set<std::string> evidentFiles(const BillOfMaterials& bill) {
    std::set<std::string> paths;
    for (const Component& component : bill.components) {
        for (const Occurrence& occurrence : component.occurrences) paths.insert(occurrence.path);
    }
    return paths;
}

}  // namespace zavcli
